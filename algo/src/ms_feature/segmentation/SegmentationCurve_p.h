#pragma once

#include "common/stable/PlotBase.h"
#include "common/stable/Result.h"

#include <QList>
#include <QPointF>

#include <vector>

/// What the two segmentation finders have in common.
namespace zel::segmentation {

/// A difference of Gaussians: a narrow one of sum 1 less `depth` times a wide one, over offsets of
/// up to 3 times the larger width plus one, divided by the sum of the taps. The Gaussians are
/// exp(-d^2 / sigma^2), without a factor 2 in the exponent.
/// \param sigmaA, sigmaB  widths in samples; their order does not matter. One of 0 or less stands
///                        for a single sample
/// \param depth           a depth of 1 or more is replaced by 0.9
/// \param asymmetry       how many times wider the side of positive offsets is
/// \return an odd number of taps
std::vector<double> buildSmoothingKernel(double sigmaA,
                                         double sigmaB,
                                         double depth,
                                         double asymmetry);

/// The kernel of both finders: `sigma` samples wide, less a fifth of one three times as wide.
std::vector<double> smoothingKernel(double sigma);

/// The curve with its heights, or their magnitudes, replaced by their convolution with the kernel.
/// \param magnitudes  takes the heights without their sign, and raises sums below 0 to 0
QList<QPointF> smoothed(const QList<QPointF>& curve,
                        const std::vector<double>& kernel,
                        bool magnitudes);

/// How many samples per minute are used: the setting, held from 1 up to `maxRate`.
double limitedRate(double samplesPerMinute, double maxRate);

/// How many samples a plot takes on a regular grid of `rate` samples a minute, at least 10.
/// \return kBadParameterError for a plot of fewer than two points, without an extent, or so long
///         that it would take more than 10 million samples
Result<int> gridSampleCount(const PlotBase& plot, double rate);

} // namespace zel::segmentation
