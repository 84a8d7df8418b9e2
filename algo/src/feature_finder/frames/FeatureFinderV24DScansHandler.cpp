#include "feature_finder/frames/FeatureFinderV24DScansHandler.h"

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Logging.h"
#include "common/stable/MathUtils.h"
#include "common/stable/PointList.h"
#include "feature_finder/FeatureFinderBase.h"
#include "feature_finder/frames/FrameMatrix_p.h"
#include "feature_finder/frames/FrameSum_p.h"
#include "feature_finder/records/ScanNumber_p.h"

#include <algorithm>
#include <limits>

namespace zel {

using msreader::MsQuery;
using msreader::MsScanId;
using msreader::PeakPickingFilter;

namespace {

using Frame = FeatureFinderV24DScansHandler::Frame;
using Matrix = FeatureFinderV24DScansHandler::Matrix;

/// Entries of the matrix when it is the sum of the whole run.
constexpr int kMaxPointsOfWholeRun = 10000000;

} // namespace

FeatureFinderV24DScansHandler::FeatureFinderV24DScansHandler()
    : m_summingMatrix(new FrameSum)
{}
FeatureFinderV24DScansHandler::FeatureFinderV24DScansHandler(const FeatureFinderV24DScansHandler&) =
    default;
FeatureFinderV24DScansHandler& FeatureFinderV24DScansHandler::operator=(
    const FeatureFinderV24DScansHandler&) = default;
FeatureFinderV24DScansHandler::~FeatureFinderV24DScansHandler() = default;

Error FeatureFinderV24DScansHandler::init(msreader::MsDataSourceInterface* source,
                                          SettableFeatureFinderParameters params)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    *this = FeatureFinderV24DScansHandler();
    m_source = source;
    m_params = params;
    ZEL_ASSIGN_OR_RETURN(const bool hasMobility, FeatureFinderBase::hasMobilityCheck(source));
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(
        hasMobility, true, Error(kError, "The source has no ion mobility")));
    ZEL_RETURN_IF_ERROR(setScansIds());
    ZEL_RETURN_IF_ERROR(setMaxD2());
    ZEL_ASSIGN_OR_RETURN(m_d1Range, source->d1Range());
    ZEL_ASSIGN_OR_RETURN(m_d2Range, source->d2Range());
    ZEL_ASSIGN_OR_RETURN(m_d1RetentionTimes,
                         FeatureFinderBase::buildIndexRetentionTimeMap(source, 1));
    setParametersToSumAllD1s();
    ZEL_RETURN_IF_ERROR(initSummingMatrix());
    return kNoError;
}

Error FeatureFinderV24DScansHandler::setScansIds()
{
    ZEL_ASSIGN_OR_RETURN(
        const QList<MsScanId> ids,
        m_source->scanIds(MsQuery::createByMsLevel(1).setD2(math::Range<long long>())));
    for (const MsScanId& id : ids) {
        const std::optional<int> d1 = scanNumber(id.d1);
        if (d1 && scanNumber(id.d2)) {
            m_scanIdsByD1[*d1].append(id);
        } else {
            qCCritical(algoLog) << "Found scan with no d1 or d2:" << id.toString();
        }
    }
    m_d1s = m_scanIdsByD1.keys();
    return kNoError;
}

/// Takes the greatest D2 of all scans.
Error FeatureFinderV24DScansHandler::setMaxD2()
{
    Error e;
    ZEL_RETURN_IF_ERROR(
        ErrorUtils::emptyCheckReturn(m_scanIdsByD1, Error(kError, "D2 limit could not be set")));
    m_maxD2 = std::numeric_limits<int>::min();
    for (const QList<MsScanId>& ids : std::as_const(m_scanIdsByD1)) {
        for (const MsScanId& id : ids) {
            m_maxD2 = std::max(m_maxD2, *scanNumber(id.d2));
        }
    }
    ZEL_RETURN_IF_ERROR(ErrorUtils::aboveThreshold<int>(
        m_maxD2,
        0,
        ErrorUtilsParam::Exclusive,
        Error(kError, QStringLiteral("No mobility scan has a number above 0"))));
    return kNoError;
}

void FeatureFinderV24DScansHandler::setParametersToSumAllD1s()
{
    if (m_params.numberOfFramesToSum == 0) {
        m_params.numberOfFramesToSum = static_cast<int>(m_scanIdsByD1.size());
        m_maxPointsPerFrame = kMaxPointsOfWholeRun;
    }
}

Error FeatureFinderV24DScansHandler::initSummingMatrix()
{
    Error e;
    const int columns = MathUtils::truncateToInt(
        FeatureFinderUtilities::unHashMz(m_maxD2, m_params.d2HashFactor) + 1.0);
    ZEL_RETURN_IF_ERROR(ErrorUtils::aboveThreshold<int>(
        columns,
        1,
        ErrorUtilsParam::Exclusive,
        Error(kError, QStringLiteral("The mobility axis has %1 columns").arg(columns))));
    ZEL_RETURN_IF_ERROR(ErrorUtils::belowThreshold<int>(
        columns,
        kMaxFrameColumnCount,
        ErrorUtilsParam::Inclusive,
        Error(kError, QStringLiteral("The mobility axis has %1 columns").arg(columns))));
    const int rows =
        MathUtils::truncateToInt(g_immutableFeatureFinderParameters.maxMz * m_params.mzHashFactor);
    ZEL_RETURN_IF_ERROR(ErrorUtils::aboveThreshold<int>(
        rows,
        0,
        ErrorUtilsParam::Exclusive,
        Error(kError, QStringLiteral("The m/z axis has %1 rows").arg(rows))));
    m_summingMatrix->reset(rows, columns);
    return kNoError;
}

Result<Matrix> FeatureFinderV24DScansHandler::getFrameRaw(int d1)
{
    Error e;
    if (m_summingMatrix->frameCount() == 0) {
        ZEL_RETURN_IF_ERROR(loadFirstFrames(d1));
    } else {
        ZEL_RETURN_IF_ERROR(slideTo(d1));
    }
    Matrix sum;
    m_summingMatrix->strongestCells(
        m_params.relativeFrameNoiseFloor, static_cast<std::size_t>(m_maxPointsPerFrame), &sum);
    return sum;
}

/// Fills the window.
Error FeatureFinderV24DScansHandler::loadFirstFrames(int d1)
{
    Error e;
    const int first = findD1Index(d1);
    ZEL_RETURN_IF_ERROR(ErrorUtils::notEqual<int>(
        first, -1, Error(kError, QStringLiteral("There is no frame %1").arg(d1))));
    for (const int frameD1 : m_d1s.mid(first, std::max(m_params.numberOfFramesToSum, 0))) {
        auto frame = buildScanFrame(frameD1);
        if (frame.isOk()) {
            Matrix matrix;
            buildMatrix(frame.value(), &matrix);
            m_summingMatrix->append(&matrix);
        } else {
            qCWarning(algoLog) << "No data returned for Frame:" << frameD1;
        }
    }
    ZEL_RETURN_IF_ERROR(checkWindowIsFull());
    return kNoError;
}

/// Moves the window on by a frame.
Error FeatureFinderV24DScansHandler::slideTo(int d1)
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkWindowIsFull());
    const int index = findD1Index(d1);
    ZEL_RETURN_IF_ERROR(ErrorUtils::notEqual<int>(
        index, -1, Error(kError, QStringLiteral("There is no frame %1").arg(d1))));
    const qsizetype last = index + m_params.numberOfFramesToSum - 1;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(
        last < m_d1s.size(),
        true,
        Error(kError, QStringLiteral("The run ends before the window of frame %1").arg(d1))));
    ZEL_ASSIGN_OR_RETURN(const Frame frame, buildScanFrame(m_d1s[last]));
    Matrix matrix;
    buildMatrix(frame, &matrix);
    m_summingMatrix->slide(&matrix);
    return kNoError;
}

Error FeatureFinderV24DScansHandler::checkWindowIsFull() const
{
    return ErrorUtils::equal<long long>(
        m_summingMatrix->frameCount(),
        m_params.numberOfFramesToSum,
        Error(kError,
              QStringLiteral("%1 frames are to be summed, but the window holds %2")
                  .arg(m_params.numberOfFramesToSum)
                  .arg(m_summingMatrix->frameCount())));
}

Result<Frame> FeatureFinderV24DScansHandler::buildScanFrame(int d1)
{
    Error e;
    const auto ids = m_scanIdsByD1.constFind(d1);
    ZEL_RETURN_IF_ERROR(
        ErrorUtils::equal<bool>(ids != m_scanIdsByD1.constEnd(),
                                true,
                                Error(kError, QStringLiteral("There is no frame %1").arg(d1))));
    Frame frame;
    for (const MsScanId& id : *ids) {
        const auto points = m_source->scanData(MsQuery(id, PeakPickingFilter::Profile));
        if (points.isOk()) {
            frame.insert(*scanNumber(id.d2), points.value());
        } else {
            qCWarning(algoLog) << "No data returned for scanId:" << id.toString();
        }
    }
    return frame;
}

void FeatureFinderV24DScansHandler::buildMatrix(const Frame& frame, Matrix* matrix) const
{
    const int firstColumn = std::max(columnOf(m_minD2), 0);
    const int lastColumn = std::min(columnOf(m_maxD2), m_summingMatrix->columns() - 1);
    const bool takesAll = takesAllMz();
    FrameColumns columns(m_summingMatrix->rows(), m_summingMatrix->columns());
    BinnedScan scan;
    QList<QPointF> inside;
    for (auto d2 = frame.cbegin(); d2 != frame.cend(); ++d2) {
        const int column = columnOf(d2.key());
        if (column < firstColumn || column > lastColumn) {
            continue;
        }
        if (!takesAll) {
            getPointsInBetween(d2.value(), m_minMz, m_maxMz, inside, true);
        }
        binScan(
            takesAll ? d2.value() : inside, m_params.mzHashFactor, m_summingMatrix->rows(), &scan);
        if (!scan.rows.empty()) {
            columns.append(column, scan);
        }
    }
    columns.finish(matrix);
}

int FeatureFinderV24DScansHandler::findD1Index(int d1) const
{
    const auto found = std::lower_bound(m_d1s.cbegin(), m_d1s.cend(), d1);
    return found == m_d1s.cend() || *found != d1 ? -1 : static_cast<int>(found - m_d1s.cbegin());
}

int FeatureFinderV24DScansHandler::columnOf(int d2) const
{
    return columnOfD2(d2, m_params.d2HashFactor);
}

bool FeatureFinderV24DScansHandler::takesAllMz() const
{
    return MathUtils::nearlyEqual(m_minMz, 0.0) &&
           MathUtils::nearlyEqual(m_maxMz, g_immutableFeatureFinderParameters.maxMz);
}

QList<int> FeatureFinderV24DScansHandler::allD1s() const
{
    return m_d1s.first(std::min(std::max<qsizetype>(m_d1s.size() - m_params.numberOfFramesToSum, 1),
                                m_d1s.size()));
}

void FeatureFinderV24DScansHandler::setMinD2AndMaxD2(const Interval<int>& range)
{
    m_minD2 = range.start;
    m_maxD2 = std::min(m_maxD2, range.end);
}

void FeatureFinderV24DScansHandler::setMinMzAndMaxMz(const Interval<double>& range)
{
    m_minMz = range.start;
    m_maxMz = std::min(g_immutableFeatureFinderParameters.maxMz, range.end);
}

void FeatureFinderV24DScansHandler::clearFramesAndSummingMatrix()
{
    m_summingMatrix->reset(m_summingMatrix->rows(), m_summingMatrix->columns());
}

} // namespace zel
