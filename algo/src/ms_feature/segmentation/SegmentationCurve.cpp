#include "common/core_mini/src/algo/numeric/Convolution.h"
#include "ms_feature/segmentation/SegmentationCurve_p.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace zel::segmentation {

namespace {

/// A Gaussian of area 1 with the width `below` for offsets up to 0 and `above` for positive ones; a
/// single sample of height 1 for a width of 0 or less.
class Gaussian
{
public:
    Gaussian(double below, double above)
        : m_isSample(!(below > 0.0))
        , m_varianceBelow(below * below)
        , m_varianceAbove(above * above)
        , m_divisorBelow(std::sqrt(m_varianceBelow * std::numbers::pi))
        , m_divisorAbove(std::sqrt(m_varianceAbove * std::numbers::pi))
    {}

    double at(int offset) const
    {
        if (m_isSample) {
            return offset == 0 ? 1.0 : 0.0;
        }
        const double d = offset;
        return offset <= 0 ? std::exp(-(d * d) / m_varianceBelow) / m_divisorBelow
                           : std::exp(-(d * d) / m_varianceAbove) / m_divisorAbove;
    }

private:
    bool m_isSample;
    double m_varianceBelow;
    double m_varianceAbove;
    double m_divisorBelow;
    double m_divisorAbove;
};

/// How many taps lie on each side of the middle one.
int kernelHalfWidth(double sigma)
{
    constexpr double maxHalfWidth = 1e6; // no grid is that long; keeps odd settings harmless
    const double halfWidth = 3.0 * sigma + 1.0 - 1e-16;
    return halfWidth > 0.0 ? static_cast<int>(std::min(halfWidth, maxHalfWidth)) : 0;
}

} // namespace

std::vector<double> buildSmoothingKernel(double sigmaA,
                                         double sigmaB,
                                         double depth,
                                         double asymmetry)
{
    constexpr double greatestDepth = 0.9;
    const auto [narrow, wide] = std::minmax(sigmaA, sigmaB);
    const double share = depth >= 1.0 ? greatestDepth : depth;
    const int halfWidth = kernelHalfWidth(wide);
    const Gaussian peak(narrow, narrow * asymmetry);
    const Gaussian trough(wide, wide * asymmetry);
    const auto tapAt = [&](int offset) { return peak.at(offset) - share * trough.at(offset); };
    std::vector<double> taps(2 * static_cast<std::size_t>(halfWidth) + 1);
    const auto middle = taps.begin() + halfWidth;
    for (int offset = 0; offset <= halfWidth; ++offset) {
        middle[-offset] = tapAt(-offset);
        middle[offset] = asymmetry == 1.0 ? middle[-offset] : tapAt(offset);
    }
    const double sum = std::accumulate(taps.begin(), taps.end(), 0.0);
    if (sum != 0.0) {
        for (double& tap : taps) {
            tap /= sum;
        }
    }
    return taps;
}

std::vector<double> smoothingKernel(double sigma)
{
    constexpr double widthRatio = 3.0;
    constexpr double depth = 0.2;
    constexpr double asymmetry = 1.0;
    return buildSmoothingKernel(sigma, widthRatio * sigma, depth, asymmetry);
}

QList<QPointF> smoothed(const QList<QPointF>& curve,
                        const std::vector<double>& kernel,
                        bool magnitudes)
{
    std::vector<double> heights;
    heights.reserve(static_cast<std::size_t>(curve.size()));
    for (const QPointF& point : curve) {
        heights.push_back(magnitudes ? std::abs(point.y()) : point.y());
    }
    constexpr int sameLength = 0;
    core::conv(heights, kernel, sameLength, &heights);
    QList<QPointF> points = curve;
    for (qsizetype i = 0; i < points.size(); ++i) {
        const double height = heights[static_cast<std::size_t>(i)];
        points[i].setY(magnitudes ? std::max(height, 0.0) : height);
    }
    return points;
}

double limitedRate(double samplesPerMinute, double maxRate)
{
    constexpr double minRate = 1.0;
    return std::clamp(samplesPerMinute, minRate, maxRate);
}

Result<int> gridSampleCount(const PlotBase& plot, double rate)
{
    constexpr double minCount = 10.0;
    constexpr double maxCount = 1e7;
    const QList<QPointF>& points = plot.getPointList();
    if (points.size() < 2 || !(points.constLast().x() > points.constFirst().x())) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("An XIC of %1 points has no extent").arg(points.size()));
    }
    const double span = points.constLast().x() - points.constFirst().x();
    const double count = std::max(std::trunc(rate * span + 0.5), minCount);
    if (!(count <= maxCount)) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("An XIC of %1 min is too long for %2 samples a minute")
                             .arg(span)
                             .arg(rate));
    }
    return static_cast<int>(count);
}

} // namespace zel::segmentation
