#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/ms_types/MsDataSourceInterface.h"
#include "common/ms_types/MsReaderThreadPoolProvider.h"
#include "common/ms_types/ScanReading.h"
#include "common/stable/Logging.h"
#include "common/stable/PointList.h"
#include "turbo/index/SpectrumMatrixBuilder_p.h"
#include "turbo/index/TurboXic_p.h"

#include <QFutureSynchronizer>
#include <QtConcurrentRun>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>

namespace zel {

using msreader::MsQuery;
using msreader::MsScanId;
using msreader::ScanInfoBasic;

namespace {

/// Of how many chunks the last one is logged.
constexpr qsizetype kChunksPerLogLine = 4;

Error checkSettings(const TurboXicSettings& settings)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(settings.maxMz != 0, true, Error(kError)));
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(settings.granularity != 0, true, Error(kError)));
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(settings.maxIonCount != 0, true, Error(kError)));
    return kNoError;
}

Result<QList<ScanInfoBasic>> ms1Scans(msreader::MsDataSourceInterface* source)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const QList<MsScanId> ids, source->scanIds(MsQuery::createByMsLevel(1)));
    ZEL_ASSIGN_OR_RETURN(QList<ScanInfoBasic> scans, source->scanInfoBasic(ids));
    ZEL_RETURN_IF_ERROR(ErrorUtils::emptyCheckReturn(scans, Error(kError)));
    const auto hasTime = [](const ScanInfoBasic& scan) {
        return std::isfinite(scan.retentionTimeMinutes);
    };
    if (!std::ranges::all_of(scans, hasTime) ||
        !std::ranges::is_sorted(scans, {}, &ScanInfoBasic::retentionTimeMinutes)) {
        ZEL_RETURN_ERROR(kError, "The scans of the run do not ascend in time");
    }
    return scans;
}

/// Keeps the most intense peaks of each spectrum. One that has more is trimmed by a task of its own
/// on the threads of the pool. May throw std::bad_alloc.
void trim(QList<QList<QPointF>>& spectra, int maxIonCount)
{
    std::atomic<bool> outOfMemory = false;
    QFutureSynchronizer<void> tasks; // waits for all of them before the spectra go
    for (QList<QPointF>& spectrum : spectra) {
        if (spectrum.size() > maxIonCount) {
            tasks.addFuture(QtConcurrent::run(MsReaderThreadPoolProvider::calculateThreadPool(),
                                              [&spectrum, &outOfMemory, maxIonCount] {
                                                  try {
                                                      removeLowIntensePoints(
                                                          spectrum, maxIonCount, true);
                                                  } catch (const std::bad_alloc&) {
                                                      outOfMemory = true;
                                                  }
                                              }));
        }
    }
    tasks.waitForFinished();
    if (outOfMemory) {
        throw std::bad_alloc();
    }
}

/// Fills the columns of all scans, in their order.
Error appendScans(msreader::MsDataSourceInterface* source,
                  const QList<ScanInfoBasic>& scans,
                  const TurboXicSettings& settings,
                  const QSharedPointer<ProgressBarInterface>& progress,
                  SpectrumMatrixBuilder* builder)
{
    const int chunkCount = msreader::chunkCount(scans.size());
    ProgressContext context(chunkCount, progress);
    for (int chunk = 0; chunk < chunkCount; ++chunk) {
        const qsizetype start = chunk * msreader::kScansPerChunk;
        const qsizetype end = start + msreader::kScansPerChunk;
        if (chunk % kChunksPerLogLine == kChunksPerLogLine - 1) {
            qCDebug(algoLog) << "LOADING SCAN" << end << "FMDS";
        }
        ZEL_ASSIGN_OR_RETURN(
            QList<QList<QPointF>> spectra,
            msreader::readScans(
                source, scans, start, std::min(end, scans.size()), settings.peakPickingFilter));
        trim(spectra, settings.maxIonCount);
        for (const QList<QPointF>& spectrum : std::as_const(spectra)) {
            if (!builder->appendColumn(spectrum)) {
                ZEL_RETURN_ERROR(kError, "The run has more peaks than an index can hold");
            }
        }
        ++context;
    }
    return kNoError;
}

} // namespace

Error TurboXic::Private::build(msreader::MsDataSourceInterface* source,
                               const QString& fingerprint,
                               const QSharedPointer<ProgressBarInterface>& progress)
try {
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    qCDebug(algoLog) << "init TurboXic by" << source->dataSourceInformation().description();
    dataFingerprint = fingerprint;
    ZEL_RETURN_IF_ERROR(checkSettings(settings));
    ZEL_ASSIGN_OR_RETURN(const QList<ScanInfoBasic> scans, ms1Scans(source));
    const int maxBin = FeatureFinderUtilities::hashMz(settings.maxMz, settings.granularity);
    const auto scanCount = static_cast<int>(scans.size());
    SpectrumMatrixBuilder builder(
        std::max(maxBin, 0), scanCount, settings.granularity, settings.maxIonCount);
    ZEL_RETURN_IF_ERROR(appendScans(source, scans, settings, progress, &builder));
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(builder.entryCount() != 0, true, Error(kError)));
    Eigen::VectorXd times(scanCount);
    std::ranges::transform(scans, times.begin(), &ScanInfoBasic::retentionTimeMinutes);
    Eigen::SparseMatrix<double> matrix;
    builder.finish(&matrix);
    setContent(std::move(matrix), std::move(times));
    if (builder.replacedCount() > 0) {
        e.addWarning(QStringLiteral("%1 of %2 peaks share an m/z bin of their scan with a later "
                                    "one, and are left out")
                         .arg(builder.replacedCount())
                         .arg(builder.replacedCount() + intensityMatrix.nonZeros()));
    }
    return e;
} catch (const std::bad_alloc&) {
    ZEL_RETURN_ERROR(kError, "Not enough memory for the index");
}

} // namespace zel
