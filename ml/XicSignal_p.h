#pragma once

#include "common/stable/Result.h"

#include <QList>
#include <QPointF>

#include <span>
#include <vector>

namespace zel {

/// What detector and splitter both work on: the heights of a trace by sample, smoothed, and the
/// noise in them.
struct XicSignal
{
    std::vector<double> raw;      ///< gaps bridged
    std::vector<double> smoothed; ///< parallel to `raw`
    double noise = 0.0;           ///< standard deviation of `raw`

    /// How many samples are above 0.
    std::ptrdiff_t positiveCount() const;
};

/// Whether an option is a number that a factor or a width can be: finite and not negative.
bool isSize(double value);

/// Bridges gaps, smooths by a Gaussian with a standard deviation of one sample (of three taps where
/// a peak is no wider than 5 samples at half height), and estimates the noise where there is
/// signal: 1.4826 times the median magnitude of the fourth differences over sqrt(70), and at least
/// half the smallest positive height, as what lies below that was not reported.
/// \param xic           (minutes, intensity), times not descending
/// \param maxGapPoints  gaps of at most this many samples at or below 0 between signal are
///                      replaced by a line
/// \return kBadParameterError when a value is not finite or the times descend
Result<XicSignal> xicSignal(const QList<QPointF>& xic, int maxGapPoints);

/// The heights under a Gaussian of this standard deviation, in samples, above 0.
std::vector<double> gaussianSmoothed(std::span<const double> heights, double sigma);

/// The baseline below a trace: the heights are clipped to the mean of their neighbours on both
/// sides, at distances from `halfWindow` samples down to 1 (statistics-sensitive nonlinear
/// iterative peak clipping: Ryan et al. 1988, doi:10.1016/0168-583X(88)90063-8; the descending
/// window: Morhac & Matousek 2008, doi:10.1366/000370208783412762). What is narrower than twice the
/// window is taken off, and a line stays a line: the square roots that those authors clip would
/// bend it. \note O(samples * halfWindow).
std::vector<double> snipBaseline(std::span<const double> heights, std::size_t halfWindow);

} // namespace zel
