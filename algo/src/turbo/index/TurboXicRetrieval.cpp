#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "turbo/index/TurboXic_p.h"

#include <algorithm>
#include <cmath>

namespace zel {

namespace {

/// What a bin may lie outside the m/z window, in Th.
constexpr double kMzTolerance = 1e-10;
/// What a scan may lie outside the time window, in minutes.
constexpr double kTimeTolerance = 1e-6;
/// How many columns ahead entries are fetched into the cache: about the time that memory takes.
constexpr int kColumnsAhead = 8;

double totalLength(const math::ClosedMultiInterval<double, 10>& set)
{
    double length = 0.0;
    for (const Interval<double>& piece : set.intervals()) {
        length += piece.end - piece.start;
    }
    return length;
}

/// The first place in [start, end) whose row is not below `row`; `end` when there is none.
int firstPlace(const int* rows, int start, int end, int row)
{
    constexpr int longRange = 64;
    if (end - start > longRange) {
        return static_cast<int>(std::lower_bound(rows + start, rows + end, row) - rows);
    }
    // Counting has no branch to mispredict.
    int place = start;
    for (int i = start; i < end; ++i) {
        place += rows[i] < row ? 1 : 0;
    }
    return place;
}

} // namespace

std::span<const double> TurboXic::Private::times() const
{
    return {scanTimes.data(), static_cast<std::size_t>(scanTimes.size())};
}

QList<QPointF> TurboXic::Private::sumBlock(int firstRow,
                                           int lastRow,
                                           int firstColumn,
                                           int lastColumn) const
{
    QList<QPointF> sums;
    sums.reserve(std::max(lastColumn - firstColumn + 1, 0));
    const int* const rows = intensityMatrix.innerIndexPtr();
    const double* const values = intensityMatrix.valuePtr();
    const int* const columnStarts = intensityMatrix.outerIndexPtr();
    const MzDirectory::Places places = mzDirectory.places(firstRow);
    for (int column = firstColumn; column <= lastColumn; ++column) {
        __builtin_prefetch(rows + places.starts[std::min(column + kColumnsAhead, lastColumn)]);
        const int columnEnd = columnStarts[column + 1];
        int place = firstPlace(rows, places.starts[column], places.ends[column], firstRow);
        double sum = 0.0;
        for (; place < columnEnd && rows[place] <= lastRow; ++place) {
            sum += values[place];
        }
        sums.append(QPointF(scanTimes[column], sum));
    }
    return sums;
}

std::pair<int, int> TurboXic::Private::scanIndexRange(double start,
                                                      double end,
                                                      double tolerance) const
{
    const double low = start - tolerance;
    const double high = end + tolerance;
    const auto lastIndex = static_cast<std::ptrdiff_t>(times().size()) - 1;
    std::ptrdiff_t first = lastIndex;
    if (times().front() >= low || low < times().back()) {
        first = std::ranges::lower_bound(times(), low) - times().begin();
    }
    std::ptrdiff_t last = 0;
    if (times().front() < high) {
        last = std::ranges::upper_bound(times(), high) - times().begin() - 1;
    }
    return {static_cast<int>(first), static_cast<int>(last)};
}

int TurboXic::Private::nearestScanIndex(double time) const
{
    if (time < 0.0) {
        return 0;
    }
    const auto distance = [this, time](std::ptrdiff_t index) {
        return std::abs(scanTimes[index] - time);
    };
    const auto lastIndex = static_cast<std::ptrdiff_t>(times().size()) - 1;
    std::ptrdiff_t nearest =
        std::min(std::ranges::lower_bound(times(), time) - times().begin(), lastIndex);
    if (nearest > 0 && distance(nearest - 1) <= distance(nearest)) {
        // Of scans at one time the first.
        nearest = std::ranges::lower_bound(times(), scanTimes[nearest - 1]) - times().begin();
    }
    return static_cast<int>(nearest == lastIndex ? lastIndex - 1 : nearest);
}

Result<QList<QPointF>> TurboXic::Private::retrieveXic(const XicDimensions& dimensions) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(isValid(), true, Error(kError)));
    const auto& mz = dimensions.mzInterval();
    const auto& time = dimensions.timeInterval();
    const auto [firstRow, lastRow] = FeatureFinderUtilities::hashMz(
        *mz.minimum(), *mz.maximum(), settings.granularity, kMzTolerance);
    const auto [firstColumn, lastColumn] =
        scanIndexRange(*time.minimum(), *time.maximum(), kTimeTolerance);
    // No clamping of rows: those outside the matrix hold nothing.
    return sumBlock(firstRow, lastRow, firstColumn, lastColumn);
}

Result<QList<QPointF>> TurboXic::Private::retrieveXicPreGuava(const XicDimensions& dimensions) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(isValid(), true, Error(kError)));
    const auto& mz = dimensions.mzInterval();
    const auto& time = dimensions.timeInterval();
    const double granularity = settings.granularity;
    const auto bin = [granularity](double value) {
        return FeatureFinderUtilities::hashMz(value, granularity);
    };
    const int firstRow = std::clamp(bin(*mz.minimum()), 0, rowCount() - 1);
    int extraRows = rowCount() - firstRow - 1;
    if (bin(*mz.maximum()) <= rowCount() - 1) {
        extraRows = std::max(std::min(extraRows, bin(totalLength(mz))), 0);
    }
    const int firstColumn = std::clamp(nearestScanIndex(*time.minimum()), 0, columnCount() - 1);
    const int lastColumn = std::clamp(nearestScanIndex(*time.maximum()), 0, columnCount() - 1);

    ZEL_RETURN_IF_ERROR(ErrorUtils::aboveThreshold(
        firstRow, 0, ErrorUtilsParam::Inclusive, Error(kBadParameterError)));
    ZEL_RETURN_IF_ERROR(ErrorUtils::belowThreshold(
        firstRow + extraRows, rowCount(), ErrorUtilsParam::Exclusive, Error(kError)));
    ZEL_RETURN_IF_ERROR(ErrorUtils::aboveThreshold(
        firstColumn, 0, ErrorUtilsParam::Inclusive, Error(kBadParameterError)));
    ZEL_RETURN_IF_ERROR(ErrorUtils::belowThreshold(
        lastColumn, columnCount(), ErrorUtilsParam::Exclusive, Error(kBadParameterError)));
    return sumBlock(firstRow, firstRow + extraRows, firstColumn, lastColumn);
}

Error TurboXic::Private::checkScanIndex(int scanIndex) const
{
    if (scanIndex < 0 || scanIndex >= columnCount()) {
        ZEL_RETURN_ERROR(kError,
                         QStringLiteral("Index (%1) is out of range (%2 - %3)")
                             .arg(scanIndex)
                             .arg(0)
                             .arg(columnCount() - 1));
    }
    return kNoError;
}

} // namespace zel
