#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "common/stable/MathUtils.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace zel {

namespace {

/// The least whole number not below `value`, held inside the range of `int`; NaN gives the upper
/// end.
int ceilToInt(double value)
{
    if (!(value <= std::numeric_limits<int>::max())) {
        return std::numeric_limits<int>::max();
    }
    if (value <= std::numeric_limits<int>::min()) {
        return std::numeric_limits<int>::min();
    }
    const int truncated = static_cast<int>(value);
    return value > truncated ? truncated + 1 : truncated;
}

/// Where a slice of `halfWidth` to each side of `center` meets an axis of `length` places.
struct SliceRange
{
    SliceRange(int center, int halfWidth, Eigen::Index length)
        : offset(static_cast<long long>(center) - halfWidth)
        , first(static_cast<int>(std::clamp(offset, 0LL, static_cast<long long>(length))))
        , last(static_cast<int>(std::clamp(static_cast<long long>(center) + halfWidth,
                                           -1LL,
                                           static_cast<long long>(length) - 1)))
    {}

    int sliceIndex(int index) const { return static_cast<int>(index - offset); }

    long long offset; ///< place on the axis of the slice's index 0; may lie outside
    int first;        ///< first place inside both
    int last;         ///< last place inside both; below `first` when there is none
};

Error checkHalfWidth(int halfWidth)
{
    constexpr int greatestHalfWidth = (std::numeric_limits<int>::max() - 1) / 2;
    if (halfWidth < 0 || halfWidth > greatestHalfWidth) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("The half width of a slice must be 0 to %1, but is %2")
                             .arg(greatestHalfWidth)
                             .arg(halfWidth));
    }
    return kNoError;
}

} // namespace

std::pair<int, int> FeatureFinderUtilities::hashMz(double start,
                                                   double end,
                                                   double binsPerUnit,
                                                   double tolerance)
{
    const double low = start - tolerance;
    const double high = end + tolerance;
    int first = ceilToInt(low * binsPerUnit);
    int last = floorToInt(high * binsPerUnit);
    // The product may be rounded across a bin whose m/z is the limit itself, either way.
    if (first > std::numeric_limits<int>::min() && unHashMz(first - 1, binsPerUnit) >= low) {
        --first;
    } else if (first < std::numeric_limits<int>::max() && unHashMz(first, binsPerUnit) < low) {
        ++first;
    }
    if (last < std::numeric_limits<int>::max() && unHashMz(last + 1, binsPerUnit) <= high) {
        ++last;
    } else if (last > std::numeric_limits<int>::min() && unHashMz(last, binsPerUnit) > high) {
        --last;
    }
    return {first, last};
}

double FeatureFinderUtilities::findPoint2dListMaximum(const QList<QPointF>& points)
{
    double maximum = -std::numeric_limits<double>::infinity();
    bool found = false;
    for (const QPointF& point : points) {
        if (!std::isnan(point.y())) {
            maximum = std::max(maximum, point.y());
            found = true;
        }
    }
    return found ? maximum : 0.0;
}

double FeatureFinderUtilities::calculateMedianPoint2dList(const QList<QPointF>& points)
{
    std::vector<double> heights(static_cast<std::size_t>(points.size()));
    std::transform(points.cbegin(), points.cend(), heights.begin(), [](const QPointF& point) {
        return point.y();
    });
    return MathUtils::median(std::move(heights));
}

double FeatureFinderUtilities::calculatedWeightedRetentionTime(const QList<QPointF>& points)
{
    if (points.isEmpty()) {
        return 0.0;
    }
    double weightedSum = 0.0;
    double weightSum = 0.0;
    double plainSum = 0.0;
    for (const QPointF& point : points) {
        weightedSum += point.x() * point.y();
        weightSum += point.y();
        plainSum += point.x();
    }
    return weightSum == 0.0 ? plainSum / static_cast<double>(points.size())
                            : weightedSum / weightSum;
}

Error FeatureFinderUtilities::sliceScan(
    const Eigen::SparseVector<double, Eigen::RowMajor, int>& scan,
    int centerBin,
    int halfWidth,
    Eigen::SparseVector<double>* out)
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkHalfWidth(halfWidth));
    const SliceRange range(centerBin, halfWidth, scan.size());
    const StoredEntries inside = storedEntries(scan).between(range.first, range.last);
    out->resize(2 * halfWidth + 1);
    out->reserve(static_cast<Eigen::Index>(inside.size()));
    for (std::size_t i = 0; i < inside.size(); ++i) {
        out->insertBack(range.sliceIndex(inside.indices[i])) = inside.values[i];
    }
    return kNoError;
}

Error FeatureFinderUtilities::sliceFrame(const Eigen::SparseMatrix<double>& frame,
                                         int centerRow,
                                         int centerColumn,
                                         int rowHalfWidth,
                                         int columnHalfWidth,
                                         Eigen::SparseMatrix<double>* out)
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkHalfWidth(rowHalfWidth));
    ZEL_RETURN_IF_ERROR(checkHalfWidth(columnHalfWidth));
    const SliceRange rows(centerRow, rowHalfWidth, frame.rows());
    const SliceRange columns(centerColumn, columnHalfWidth, frame.cols());

    std::vector<StoredEntries> blocks;
    std::size_t entryCount = 0;
    for (int column = columns.first; column <= columns.last; ++column) {
        blocks.push_back(storedEntries(frame, column).between(rows.first, rows.last));
        entryCount += blocks.back().size();
    }

    Eigen::SparseMatrix<double> slice(2 * rowHalfWidth + 1, 2 * columnHalfWidth + 1);
    slice.reserve(static_cast<Eigen::Index>(entryCount));
    for (int sliceColumn = 0; sliceColumn < slice.cols(); ++sliceColumn) {
        slice.startVec(sliceColumn);
        const long long block = sliceColumn + columns.offset - columns.first;
        if (block < 0 || block >= static_cast<long long>(blocks.size())) {
            continue;
        }
        const StoredEntries& inside = blocks[static_cast<std::size_t>(block)];
        for (std::size_t i = 0; i < inside.size(); ++i) {
            slice.insertBack(rows.sliceIndex(inside.indices[i]), sliceColumn) = inside.values[i];
        }
    }
    slice.finalize();
    out->swap(slice);
    return kNoError;
}

} // namespace zel
