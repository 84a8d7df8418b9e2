#pragma once

#include <QList>
#include <QPointF>

namespace zel::msreader {

/// Turns a profile spectrum into centroids: one point (m/z, height) for each peak, ascending in
/// m/z.
///
/// A peak is a local maximum of the samples that stands out from its neighbours: where two maxima
/// meet in a valley higher than 85 % of the lower one, the lower one is taken for noise on the
/// flank of the other. Its m/z is that of the Gaussian fitted to the samples around the top, down
/// to 40 % of it: the vertex of the parabola of least squares through their logarithms, weighted by
/// the squares of their intensities (Guo, IEEE Signal Processing Magazine 28, 134 (2011); exact for
/// a Gaussian peak, whatever the sample spacing). With three samples that is the parabola through
/// them. A top without a neighbour on one side takes the mean of the two
/// samples, weighted by their intensity; a lone sample is its own centroid; a flat top of three
/// samples or more has its centroid in the middle.
///
/// The intensity of a centroid is the height of that Gaussian, since it does not depend on how
/// densely the instrument samples nor on where the samples fall, and needs no limits or baseline.
/// It is held to at most 1.19 times the top sample: that is the most a peak of two samples full
/// width at half height can rise between samples, and for narrower ones the fit says nothing.
///
/// A sample of intensity zero and a gap in the sampling (instruments leave zeros out) end a peak
/// alike. A gap is a step of more than 2.5 times the shortest one nearby: a single sample that a
/// filter took out of a peak does not cut it in two.
///
/// \param profile  (m/z, intensity), ascending in m/z, intensities not negative; equal m/z count as
/// one sample. O(n); safe to call from several threads
QList<QPointF> pickPeaks(const QList<QPointF>& profile);

} // namespace zel::msreader
