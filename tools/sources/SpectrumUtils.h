#pragma once

#include "common/ms_types/ClosedMultiInterval.h"

#include <QList>
#include <QPointF>
#include <QString>

#include <limits>

namespace zel::msreader {

// Free helpers over spectra, lists of (m/z, intensity).

/// The sum of several spectra: all their points, ascending in m/z. Points of exactly equal m/z, as
/// the scans of one time-of-flight digitiser have them, become one whose intensity is their sum.
/// \param spectra  each ascending in m/z
QList<QPointF> mergeSpectra(QList<QList<QPointF>> spectra);

/// Adds up points of exactly equal m/z.
/// \param points  ascending in m/z
void joinEqualMz(QList<QPointF>& points);

/// Sorts by m/z; points of equal m/z keep their order.
void sortByMz(QList<QPointF>& points);

/// Whether these spectra of one kind, ascending in m/z, are profiles rather than centroids.
///
/// At the sampling of a profile the samples next to a strong one lie equally far from it on both
/// sides and belong to the same peak; next to a strong centroid lies another peak at any distance.
/// So the strongest twentieth of the points of each spectrum (but 10 at least) is looked at: a
/// point votes for a profile when both neighbours are nearer than 0.2 Th, their distances differ by
/// at most a factor of 1.5, and both have a tenth of its intensity or more. The majority decides;
/// on files whose kind is known, nine tenths of such points vote for profiles and under a tenth of
/// those of LC-MS centroids do. Zero intensities do not count as points.
bool looksLikeProfile(const QList<QList<QPointF>>& spectra);

/// Whether m/z is finite and positive and the intensity finite and not negative.
inline bool isValidPoint(double mz, double intensity)
{
    constexpr double highest = std::numeric_limits<double>::max();
    return mz > 0.0 && mz <= highest && intensity >= 0.0 && intensity <= highest;
}

/// What is wrong with a point that is not valid, in words for an error message.
QString faultOfPoint(qsizetype index, double mz, double intensity);

/// What is wrong with the points of a spectrum, in words for an error message; empty when nothing
/// is: m/z finite, positive and ascending (equal ones may follow each other), intensities finite
/// and not negative.
QString firstFaultOf(const QList<QPointF>& points);

/// Leaves out the points whose m/z the set does not contain.
/// \param points  ascending in m/z
void restrictToMz(QList<QPointF>& points, const math::ClosedMultiInterval<double, 10>& mz);

} // namespace zel::msreader
