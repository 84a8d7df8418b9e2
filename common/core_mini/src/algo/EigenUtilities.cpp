#include "common/core_mini/src/algo/EigenUtilities.h"

#include "common/core_mini/src/algo/numeric/Convolution.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/stable/Logging.h"

#include <Eigen/QR>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace zel {

namespace {

Error checkSavitzkyGolayParameters(int windowSize, int polynomialOrder, int derivative)
{
    if (windowSize % 2 != 1) {
        ZEL_RETURN_ERROR(kBadParameterError, "Window size must be odd");
    }
    if (windowSize - 2 < polynomialOrder) {
        ZEL_RETURN_ERROR(kBadParameterError, "Window size is too small for given polynomial order");
    }
    if (polynomialOrder < 0 || derivative < 0 || derivative > polynomialOrder) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("A polynomial of order %1 has no fitted derivative %2")
                             .arg(polynomialOrder)
                             .arg(derivative));
    }
    return kNoError;
}

/// How far a value lies from the cutoff, for ranking.
template <typename Real>
double rankedDistance(Real value, Real cutoff)
{
    const double distance = value == cutoff ? 0.0 : std::abs(static_cast<double>(value - cutoff));
    return std::isnan(distance) ? std::numeric_limits<double>::infinity() : distance;
}

template <typename Real>
QList<int> indicesNearestTo(const Eigen::RowVectorXd& values, double cutoff, int count)
{
    std::vector<double> distances(static_cast<std::size_t>(values.size()));
    std::transform(values.begin(), values.end(), distances.begin(), [cutoff](double value) {
        return rankedDistance(static_cast<Real>(value), static_cast<Real>(cutoff));
    });
    QList<int> order(values.size());
    std::iota(order.begin(), order.end(), 0);
    const auto resultSize = std::clamp<qsizetype>(count, 0, order.size());
    std::partial_sort(
        order.begin(), order.begin() + resultSize, order.end(), [&distances](int a, int b) {
            const double distanceA = distances[static_cast<std::size_t>(a)];
            const double distanceB = distances[static_cast<std::size_t>(b)];
            return distanceA != distanceB ? distanceA < distanceB : a < b;
        });
    order.resize(resultSize);
    return order;
}

} // namespace

Error EigenUtilities::savitzkyGolayWeights(
    int windowSize, int polynomialOrder, int derivative, int rate, Eigen::VectorXd* weights)
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkSavitzkyGolayParameters(windowSize, polynomialOrder, derivative));

    // Offsets in units of the half window keep the powers within [-1, 1]; a row of the
    // pseudo-inverse then misses its power of that unit.
    const int half = (windowSize - 1) / 2;
    Eigen::MatrixXd vandermonde(windowSize, polynomialOrder + 1);
    for (int i = -half; i <= half; ++i) {
        double power = 1.0;
        for (int p = 0; p <= polynomialOrder; ++p) {
            vandermonde(i + half, p) = power;
            power *= static_cast<double>(i) / half;
        }
    }
    const Eigen::MatrixXd pseudoInverse =
        vandermonde.completeOrthogonalDecomposition().pseudoInverse();

    double scale = 1.0; // rate^derivative * derivative!, in units of the half window
    for (int d = 1; d <= derivative; ++d) {
        scale *= static_cast<double>(rate) * d / half;
    }
    *weights = pseudoInverse.row(derivative).transpose() * scale;
    return kNoError;
}

Error EigenUtilities::savitzkyGolaySmooth(const Eigen::VectorXd& kernel, Eigen::VectorXd* signal)
{
    if (kernel.size() == 0) {
        ZEL_RETURN_ERROR(kBadParameterError, "Cannot smooth with an empty kernel");
    }
    const std::span<double> samples(signal->data(), static_cast<std::size_t>(signal->size()));
    const std::span<const double> weights(kernel.data(), static_cast<std::size_t>(kernel.size()));
    convolveRepeatingEnds(samples, weights, samples);
    return kNoError;
}

std::vector<EigenUtilities::BinSum> EigenUtilities::sumIntoBins(const QList<QPointF>& points,
                                                                int length,
                                                                int binsPerUnit)
{
    std::vector<BinSum> sums;
    sums.reserve(static_cast<std::size_t>(points.size()));
    for (const QPointF& point : points) {
        const int bin = FeatureFinderUtilities::hashMz(point.x(), binsPerUnit);
        if (bin < 0 || bin >= length) {
            qCDebug(algoLog) << "Insertion point exceeds vector length";
            continue;
        }
        sums.push_back({bin, point.y()});
    }

    // Equal intensities are interchangeable, so the sums are those of a stable sort by intensity.
    if (!std::ranges::is_sorted(sums, {}, &BinSum::index)) {
        std::ranges::sort(sums, {}, &BinSum::index);
    }
    const auto ascending = [](const BinSum& a, const BinSum& b) {
        return a.sum < b.sum || (std::isnan(b.sum) && !std::isnan(a.sum));
    };
    auto kept = sums.begin();
    for (auto bin = sums.begin(); bin != sums.end();) {
        const auto next = std::find_if(
            bin, sums.end(), [bin](const BinSum& other) { return other.index != bin->index; });
        std::sort(bin, next, ascending);
        double sum = 0.0;
        std::for_each(bin, next, [&sum](const BinSum& part) { sum += part.sum; });
        *kept++ = {bin->index, sum};
        bin = next;
    }
    sums.erase(kept, sums.end());
    return sums;
}

Eigen::VectorXd EigenUtilities::buildGaussianFilter1D(int size, double sigma, bool normalize)
{
    if (size < 1) {
        return {};
    }
    if (!(sigma > 0.0)) {
        return Eigen::VectorXd::Unit(size, size / 2);
    }
    // Heights relative to the middle: a sigma far below one point must not leave all of an even
    // kernel at 0. Dividing twice, as sigma^2 may underflow.
    const double middleDistance = size % 2 == 1 ? 0.0 : 0.5;
    Eigen::VectorXd kernel(size);
    for (int i = 0; i < size; ++i) {
        const double distance = std::abs(i - (size - 1) / 2.0);
        const double excess =
            (distance - middleDistance) * (distance + middleDistance) / sigma / sigma;
        kernel[i] = std::exp(-0.5 * excess);
    }
    if (normalize) {
        kernel /= kernel.sum();
    }
    return kernel;
}

QList<int> EigenUtilities::returnIndexNearestToCutoff(const Eigen::RowVectorXd& values,
                                                      double cutoff,
                                                      int count)
{
    return indicesNearestTo<double>(values, cutoff, count);
}

QList<int> EigenUtilities::returnIndexNearestToCutoffF(const Eigen::RowVectorXd& values,
                                                       double cutoff,
                                                       int count)
{
    return indicesNearestTo<float>(values, cutoff, count);
}

} // namespace zel
