#include "feature_finder/finders/FeatureFinderV2.h"

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Logging.h"
#include "common/stable/MathUtils.h"
#include "common/stable/MemoryInfo.h"
#include "common/stable/PointList.h"
#include "common/stable/SharedNumbers.h"
#include "feature_finder/finders/FeatureFinderV2_p.h"
#include "feature_finder/frames/FrameMatrix_p.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace zel {

using msreader::MsDataSourceInterface;
using msreader::MsQuery;
using msreader::MsScanId;
using msreader::PeakPickingFilter;

namespace {

/// Columns that a matrix may have; more come only of a `d2HashFactor` far below 1.
constexpr double kMaxColumns = 1e8;

/// A stored value of a column.
struct Cell
{
    int row;
    double value;
};

/// Takes the cells of a column in any order and appends them to a matrix, those of one row summed
/// in the order in which they came.
class ColumnWriter
{
public:
    explicit ColumnWriter(Eigen::SparseMatrix<double>& matrix)
        : m_matrix(matrix)
    {}

    /// Adds the points of a scan to a column, which is the same as the last time or a later one.
    void add(int column, const QList<QPointF>& points, double mzHashFactor)
    {
        if (column != m_column) {
            flushTo(column);
        }
        for (const QPointF& point : points) {
            const int row = FeatureFinderUtilities::hashMz(point.x(), mzHashFactor);
            if (row >= 0 && row < m_matrix.rows()) {
                m_cells.push_back({row, point.y()});
            }
        }
    }

    /// Ends the matrix.
    void finish()
    {
        flushTo(static_cast<int>(m_matrix.cols()));
        m_matrix.finalize();
    }

private:
    void flushTo(int column)
    {
        const auto lower = [](const Cell& a, const Cell& b) { return a.row < b.row; };
        if (!std::is_sorted(m_cells.begin(), m_cells.end(), lower)) {
            std::stable_sort(m_cells.begin(), m_cells.end(), lower);
        }
        for (std::size_t i = 0; i < m_cells.size();) {
            const int row = m_cells[i].row;
            double sum = 0.0;
            for (; i < m_cells.size() && m_cells[i].row == row; ++i) {
                sum += m_cells[i].value;
            }
            m_matrix.insertBack(row, m_column) = sum;
        }
        m_cells.clear();
        while (m_column < column) {
            ++m_column;
            if (m_column < m_matrix.cols()) {
                m_matrix.startVec(m_column);
            }
        }
    }

    Eigen::SparseMatrix<double>& m_matrix;
    int m_column = -1;
    std::vector<Cell> m_cells;
};

/// The values that count for the median of a matrix.
std::vector<double> valuesOf(const Eigen::SparseMatrix<double>& matrix)
{
    std::vector<double> values;
    values.reserve(static_cast<std::size_t>(matrix.nonZeros()));
    std::copy_if(matrix.valuePtr(),
                 matrix.valuePtr() + matrix.nonZeros(),
                 std::back_inserter(values),
                 [](double value) { return std::abs(value) > kNegligible; });
    return values;
}

/// Replaces the column numbers of the hills by scan numbers.
void correctHillD1Values(const FrameRawGroup& group, QList<HillD1>* hills)
{
    const auto scanOf = [&group](int column) {
        return MathUtils::truncateToInt(group.d1Values(column));
    };
    for (HillD1& hill : *hills) {
        hill.d1Apex = scanOf(hill.d1ApexIndex);
        hill.d1Lo = scanOf(hill.d1LoIndex);
        hill.d1Hi = scanOf(hill.d1HiIndex);
    }
}

/// The m/z of the most intense point inside the hill, of equal ones the last; nothing without one.
std::optional<double> measuredMz(const QList<QPointF>& centroids, const HillD1& hill)
{
    QList<QPointF> inside;
    getPointsInBetween(centroids, hill.mzLo, hill.mzHi, inside, true);
    if (inside.isEmpty()) {
        return std::nullopt;
    }
    return std::max_element(inside.crbegin(),
                            inside.crend(),
                            [](const QPointF& a, const QPointF& b) { return a.y() < b.y(); })
        ->x();
}

/// Gives the hills the m/z that is measured on the centroids of their apex scan, and puts them in
/// the order of that scan, so that each is read once.
Error correctHillMzValues(MsDataSourceInterface* source, QList<HillD1>* hills)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    std::stable_sort(hills->begin(), hills->end(), [](const HillD1& a, const HillD1& b) {
        return a.d1Apex < b.d1Apex;
    });
    std::optional<int> scanRead;
    QList<QPointF> centroids;
    for (HillD1& hill : *hills) {
        if (scanRead != hill.d1Apex) {
            ZEL_ASSIGN_OR_RETURN(
                centroids,
                source->scanData(MsQuery(MsScanId(hill.d1Apex), PeakPickingFilter::Centroid)));
            scanRead = hill.d1Apex;
        }
        hill.mzApex = measuredMz(centroids, hill).value_or(hill.mzApex);
    }
    return kNoError;
}

} // namespace

FeatureFinderV2::FeatureFinderV2()
    : m_private(std::make_unique<Private>())
{}

FeatureFinderV2::~FeatureFinderV2() = default;

Result<QList<MasterFeature>> FeatureFinderV2::findFeatures(
    MsDataSourceInterface* source, QSharedPointer<ProgressBarInterface> progress)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    QElapsedTimer total;
    total.start();
    QElapsedTimer timer;
    timer.start();
    setFilePathProgressText(progress, source->dataSourceInformation().filePath);
    const ProgressContext context(4, progress);

    ZEL_RETURN_IF_ERROR(m_private->hillBuilder.init(userParams()));
    ZEL_RETURN_IF_ERROR(m_private->clusteromatic.init(userParams()));
    m_private->parameters = userParams();

    ZEL_ASSIGN_OR_RETURN(const QList<HillD1> hills,
                         m_private->featureFinderBuildHillsChunk(source, {0, 0}));
    setCounts({hills.size(), 0});
    if (hills.isEmpty()) {
        return QList<MasterFeature>();
    }
    qCDebug(algoLog) << "HILL COUNT" << hills.size() << "ms total time" << timer.restart();

    ZEL_ASSIGN_OR_RETURN(const QList<ChargeFeature> chargeFeatures,
                         m_private->clusteromatic.buildChargeFeatures(hills));
    setCounts({hills.size(), chargeFeatures.size()});
    qCDebug(algoLog) << "CHARGE FEATURES COUNT" << chargeFeatures.size() << "ms" << timer.restart();

    QList<MasterFeature> masters = groupChargeFeaturesToMasterFeatures(chargeFeatures);
    if (userParams().convertD1ToRetentionTime) {
        ZEL_RETURN_IF_ERROR(convertD1FromScanIndexToRetentionTimeMinutes(source, &masters));
    }
    qCDebug(algoLog) << "MASTER FEATURES SIZE" << masters.size();
    qCDebug(algoLog) << "Overall Time to Completion"
                     << static_cast<double>(total.elapsed()) / 1000.0;
    qCDebug(algoLog) << "Process peak memory" << MemoryInfo().peakProcessWorkingSet();
    return masters;
}

Result<QList<HillD1>> FeatureFinderV2::Private::featureFinderBuildHillsChunk(
    MsDataSourceInterface* source, const Interval<int>& scanRange)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    FrameRawGroup group;
    ZEL_RETURN_IF_ERROR(buildFrameRaw(source, scanRange, &group));
    qCDebug(algoLog).noquote()
        << QStringLiteral("Hill building points: %1").arg(group.frameRaw.nonZeros());

    QElapsedTimer timer;
    timer.start();
    qCDebug(algoLog) << "Start Hill Building";
    ZEL_ASSIGN_OR_RETURN(QList<HillD1> hills, hillBuilder.buildHills(&group.frameRaw));
    qCDebug(algoLog) << "End Hill Building" << timer.elapsed();

    qCDebug(algoLog) << "Start correct d1";
    correctHillD1Values(group, &hills);
    qCDebug(algoLog) << "End correct d1";

    qCDebug(algoLog) << "Start correct mz";
    ZEL_RETURN_IF_ERROR(correctHillMzValues(source, &hills));
    qCDebug(algoLog) << "End correct mz";
    return hills;
}

Error FeatureFinderV2::Private::buildFrameRaw(MsDataSourceInterface* source,
                                              const Interval<int>& scanRange,
                                              FrameRawGroup* group)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    ZEL_ASSIGN_OR_RETURN(const auto minutes, buildIndexRetentionTimeMap(source, 1));
    ZEL_RETURN_IF_ERROR(ErrorUtils::notEqual<bool>(
        MathUtils::nearlyEqual(parameters.d2HashFactor, 0.0), true, Error(kError)));
    const bool isWholeRun = scanRange.start == 0 && scanRange.end == 0;
    const int start = isWholeRun ? 0 : scanRange.start;
    const int end = isWholeRun ? static_cast<int>(minutes.size()) : scanRange.end;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(
        isWholeRun || (end > start && start >= 0 && end <= minutes.size()), true, Error(kError)));
    ZEL_RETURN_IF_ERROR(resize(end - start, group));

    ColumnWriter writer(group->frameRaw);
    auto scan = std::next(minutes.cbegin(), start);
    for (int i = start; i < end; ++i, ++scan) {
        scanRetentionTimes.insert(scan.key(), scan.value());
        const int column = columnOfD2(i - start, parameters.d2HashFactor);
        group->d1Values(column) = scan.key();
        ZEL_ASSIGN_OR_RETURN(
            QList<QPointF> points,
            source->scanData(MsQuery(MsScanId(scan.key()), PeakPickingFilter::Profile)));
        removeLowIntensePoints(points, parameters.maxIonCount, true);
        debuggingProgressTracker(i,
                                 100,
                                 QStringLiteral("Loading scan number: %1, point count: %2")
                                     .arg(scan.key())
                                     .arg(points.size()));
        if (column < group->frameRaw.cols()) {
            writer.add(column, points, parameters.mzHashFactor);
        }
    }
    writer.finish();
    filterNoise(group);
    return kNoError;
}

/// Gives the matrix the shape for so many scans, and no entries.
Error FeatureFinderV2::Private::resize(int scanCount, FrameRawGroup* group) const
{
    Error e;
    const double rows = g_immutableFeatureFinderParameters.maxMz * parameters.mzHashFactor;
    const double columns = FeatureFinderUtilities::unHashMz(scanCount, parameters.d2HashFactor);
    const bool isMatrix = rows >= 1.0 && rows < std::numeric_limits<int>::max() &&
                          parameters.d2HashFactor > 0.0 && parameters.d2HashFactor < kMaxColumns &&
                          columns < kMaxColumns;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(
        isMatrix,
        true,
        Error(kError,
              QStringLiteral("A matrix of %1 m/z bins and %2 columns cannot be made")
                  .arg(rows)
                  .arg(columns))));
    group->frameRaw.resize(MathUtils::truncateToInt(rows), MathUtils::truncateToInt(columns));
    group->d1Values.setZero(MathUtils::truncateToInt(parameters.d2HashFactor) +
                            MathUtils::truncateToInt(columns));
    return kNoError;
}

void FeatureFinderV2::Private::filterNoise(FrameRawGroup* group) const
{
    qCDebug(algoLog) << "Filter Start";
    qCDebug(algoLog) << "Points Count" << group->frameRaw.nonZeros();
    const double threshold =
        MathUtils::median(valuesOf(group->frameRaw)) * parameters.relativeFrameNoiseFloor;
    group->frameRaw.prune(
        [threshold](Eigen::Index, Eigen::Index, double value) { return value > threshold; });
    qCDebug(algoLog) << "Filter End";
    qCDebug(algoLog) << "Points Count" << group->frameRaw.nonZeros();
}

} // namespace zel
