#include "feature_finder/finders/FeatureFinderV24D.h"

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Logging.h"
#include "common/stable/MathUtils.h"
#include "common/stable/MemoryInfo.h"
#include "feature_finder/clusters/ScanIteratorV2HillClusteromatic.h"
#include "feature_finder/frames/FeatureFinderV24DScansHandler.h"
#include "feature_finder/hills/ScanIteratorV2HillBuilder.h"

#include <QElapsedTimer>
#include <QObject>

namespace zel {

namespace {

/// The grid along m/z, bins per Th.
constexpr int kBinsPerMz = 500;

/// What turns one frame after the other into clusters.
struct FrameSteps
{
    ScanIteratorV2HillBuilder hillBuilder;
    ScanIteratorV2HillClusteromatic clusteromatic;
    FeatureFinderV24DScansHandler handler;
};

/// Fills in the D2 of the hills, which are known by column.
void setD2(QList<HillD2>& hills, double d2HashFactor)
{
    const int factor = MathUtils::truncateToInt(d2HashFactor);
    for (HillD2& hill : hills) {
        hill.d2Lo = FeatureFinderUtilities::hashMz(hill.d2LoIndex, factor);
        hill.d2Hi = FeatureFinderUtilities::hashMz(hill.d2HiIndex, factor);
        hill.d2Apex = FeatureFinderUtilities::hashMz(hill.d2ApexIndex, factor);
    }
}

/// Appends the clusters of the frame `d1`; none when it has no signal, or its clustering fails, as
/// it does without a hill.
Error appendClustersOfFrame(int d1,
                            double d2HashFactor,
                            FrameSteps* steps,
                            FeatureFinderCounts* counts,
                            QList<ChargeFeatureFrame>* clusters)
{
    QElapsedTimer frameTimer;
    frameTimer.start();
    QElapsedTimer timer;
    timer.start();
    ZEL_ASSIGN_OR_RETURN(const auto raw, steps->handler.getFrameRaw(d1));
    qCDebug(algoLog) << "Frame brought in ms:" << timer.restart() << raw.nonZeros() << "points";
    if (raw.nonZeros() == 0) {
        return kNoError;
    }
    ZEL_ASSIGN_OR_RETURN(QList<HillD2> hills, steps->hillBuilder.buildHills(raw, d1));
    qCDebug(algoLog) << "hills climbed in ms:" << timer.restart();
    counts->hills += hills.size();
    setD2(hills, d2HashFactor);
    const auto found = steps->clusteromatic.buildChargeFeatures(hills);
    qCDebug(algoLog) << "Features Extracted in ms:" << timer.elapsed();
    if (found.isOk()) { // else the frame counts as one without clusters, and the run goes on
        counts->clusters += found.value().size();
        clusters->append(found.value());
    }
    qCDebug(algoLog) << "D1" << d1 << "processed in ms:" << frameTimer.elapsed();
    qCDebug(algoLog) << "-------";
    return kNoError;
}

} // namespace

FeatureFinderV24D::FeatureFinderV24D() = default;
FeatureFinderV24D::FeatureFinderV24D(const FeatureFinderV24D&) = default;
FeatureFinderV24D& FeatureFinderV24D::operator=(const FeatureFinderV24D&) = default;
FeatureFinderV24D::~FeatureFinderV24D() = default;

Error FeatureFinderV24D::init(const SettableFeatureFinderParameters& params)
{
    Error e;
    ZEL_RETURN_IF_ERROR(FeatureFinderBase::init(params));
    setMobilityGranularity(kBinsPerMz);
    return kNoError;
}

Result<QList<MasterFeature>> FeatureFinderV24D::findFeatures(
    msreader::MsDataSourceInterface* source, QSharedPointer<ProgressBarInterface> progress)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    QElapsedTimer timer;
    timer.start();
    userParams().printFfUserParams();
    qCDebug(algoLog) << "Parameters set in ms:" << timer.elapsed();
    qCDebug(algoLog) << "******************";
    ZEL_ASSIGN_OR_RETURN(const auto frames, buildPerFrameChargeFeatures(source, progress));
    const QList<ChargeFeatureBuilder4D> builders = groupChargeFeatureFramesAcrossD1(frames);
    qCDebug(algoLog) << "SPLITTING";
    ZEL_ASSIGN_OR_RETURN(QList<ChargeFeature> features, splitChargeFeatures(builders));
    features.removeIf([this](const ChargeFeature& feature) {
        return !(feature.endD1 - feature.startD1 >=
                 static_cast<double>(userParams().minHillLengthD1));
    });
    QList<MasterFeature> masters = groupChargeFeaturesToMasterFeatures(features);
    if (userParams().convertD1ToRetentionTime) {
        ZEL_RETURN_IF_ERROR(convertD1FromScanIndexToRetentionTimeMinutes(source, &masters));
    }
    qCDebug(algoLog) << "CHARGE FEATURES SIZE" << features.size();
    qCDebug(algoLog) << "MASTER FEATURES SIZE" << masters.size();
    qCDebug(algoLog) << "Process peak memory" << MemoryInfo().peakProcessWorkingSet();
    return masters;
}

Error FeatureFinderV24D::initPerMsFile(msreader::MsDataSourceInterface* source,
                                       FeatureFinderV24DScansHandler* handler)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    ZEL_RETURN_IF_ERROR(handler->init(source, userParams()));
    if (userParams().numberOfFramesToSum == 0) {
        SettableFeatureFinderParameters params;
        params.minHillLengthD1 = -1;
        params.numberOfFramesToSum = handler->numberOfFramesToSum();
        setUserParams(params);
    }
    if ((m_startStopD2.start > -1 || m_startStopD2.end > -1) &&
        m_startStopD2.start < m_startStopD2.end) {
        handler->setMinD2AndMaxD2(m_startStopD2);
    }
    handler->setMinMzAndMaxMz(m_startStopMz);
    ZEL_ASSIGN_OR_RETURN(const bool hasMobility, hasMobilityCheck(source));
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(
        hasMobility, true, Error(kError, "The source has no ion mobility")));
    return kNoError;
}

Result<QList<ChargeFeatureFrame>> FeatureFinderV24D::buildPerFrameChargeFeatures(
    msreader::MsDataSourceInterface* source, QSharedPointer<ProgressBarInterface> progress)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    FrameSteps steps;
    ZEL_RETURN_IF_ERROR(steps.hillBuilder.init(userParams()));
    ZEL_RETURN_IF_ERROR(steps.clusteromatic.init(userParams()));
    ZEL_RETURN_IF_ERROR(initPerMsFile(source, &steps.handler));
    setFilePathProgressText(progress, source->dataSourceInformation().filePath);
    QElapsedTimer timer;
    timer.start();
    const QList<int> d1s = steps.handler.allD1s();
    ProgressContext context(static_cast<int>(d1s.size()), progress);
    context.setText(QObject::tr("Commence feature finding..."));
    QList<ChargeFeatureFrame> clusters;
    FeatureFinderCounts counts;
    for (const int d1 : d1s) {
        ++context;
        if (isSkipped(d1)) {
            continue;
        }
        if (context.isCanceled()) {
            ZEL_RETURN_ERROR(kOperationCanceledError);
        }
        ZEL_RETURN_IF_ERROR(
            appendClustersOfFrame(d1, userParams().d2HashFactor, &steps, &counts, &clusters));
    }
    setCounts(counts);
    const double seconds = static_cast<double>(timer.elapsed()) / 1000.0;
    const auto count =
        m_startStopD1.start >= 0 ? qsizetype{m_startStopD1.end} - m_startStopD1.start : d1s.size();
    qCDebug(algoLog) << "Frame Rate" << static_cast<double>(count) / seconds;
    qCDebug(algoLog) << "Overall Time to Completion" << seconds;
    return clusters;
}

bool FeatureFinderV24D::isSkipped(int d1) const
{
    return m_startStopD1.start > -1 && m_startStopD1.end > -1 &&
           (d1 < m_startStopD1.start || d1 > m_startStopD1.end);
}

} // namespace zel
