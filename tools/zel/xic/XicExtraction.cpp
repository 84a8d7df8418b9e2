#include "tools/zel/xic/XicExtraction.h"

#include "BulkXicExtractor.h"
#include "MultiIsotopeXic.h"
#include "common/stable/NumberText.h"
#include "turbo/cache/TurboXicLoader.h"
#include "turbo/index/TurboXic.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <map>
#include <memory>
#include <numeric>
#include <utility>

namespace zel::tool {

namespace {

double sumOfMembers(int /*groupIndex*/, const QList<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0);
}

/// What tells one data file from another without reading all of it: its name and size, and its
/// first and last mebibyte.
Result<QString> fingerprintOf(const QString& path)
{
    constexpr qint64 sampleBytes = 1 << 20;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ZEL_RETURN_ERROR(
            kFileOpenError,
            QStringLiteral("Could not open file %1: %2").arg(path, file.errorString()));
    }
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(file.read(sampleBytes));
    file.seek(std::max<qint64>(0, file.size() - sampleBytes));
    hash.addData(file.read(sampleBytes));
    return QStringLiteral("%1:%2:%3")
        .arg(QFileInfo(path).fileName(),
             QString::number(file.size()),
             QString::fromLatin1(hash.result().toHex()));
}

/// The index, from the cache if there is one that fits, else built and put there.
Result<std::unique_ptr<TurboXic>> indexWithCache(
    const TurboXicSettings& settings,
    const QString& cacheDirectory,
    msreader::MsDataSourceInterface* source,
    const QSharedPointer<ProgressBarInterface>& progress,
    QString* what)
{
    Error e;
    auto index = std::make_unique<TurboXic>(settings);
    const QString runPath = source->dataSourceInformation().filePath;
    ZEL_ASSIGN_OR_RETURN(const QString fingerprint, fingerprintOf(runPath));
    if (cacheDirectory.isEmpty()) {
        *what = QStringLiteral("built the index in memory");
        ZEL_RETURN_IF_ERROR(index->init(source, fingerprint, progress));
        return index;
    }
    const QString cachePath =
        QDir(cacheDirectory).filePath(QFileInfo(runPath).fileName() + TurboXic::extension());
    const bool reused = QFileInfo::exists(cachePath) && index->isValidCacheFile(cachePath);
    if (TurboXicLoader(index.get(), cachePath, progress)
            .tryLoadOrCreateCacheFile(source, fingerprint)) {
        *what =
            (reused ? QStringLiteral("reused the index %1") : QStringLiteral("built the index %1"))
                .arg(cachePath);
        return index;
    }
    // The file there belongs to other data, or the folder cannot be written: the work goes on
    // without it.
    *what = QStringLiteral("could not use %1, built the index in memory").arg(cachePath);
    if (index->isInitialized() && index->dataFingerprint() == fingerprint) {
        return index; // built, but not saved
    }
    index = std::make_unique<TurboXic>(settings);
    ZEL_RETURN_IF_ERROR(index->init(source, fingerprint, progress));
    return index;
}

/// The sum of the chromatograms of a target's boxes over the union of their times.
Result<QList<QPointF>> retrieveTarget(const TurboXic& index, const XicTarget& target)
{
    // Scans of one time stay apart: the second number counts them.
    std::map<std::pair<double, int>, double> sums;
    for (const XicDimensions& box : target.members) {
        ZEL_ASSIGN_OR_RETURN(const QList<QPointF> xic, index.retrieveXic(box));
        if (target.members.size() == 1) {
            return xic;
        }
        int ofSameTime = 0;
        for (qsizetype i = 0; i < xic.size(); ++i) {
            ofSameTime = i > 0 && xic[i].x() == xic[i - 1].x() ? ofSameTime + 1 : 0;
            sums[{xic[i].x(), ofSameTime}] += xic[i].y();
        }
    }
    QList<QPointF> merged;
    for (const auto& [scan, sum] : sums) {
        merged.append(QPointF(scan.first, sum));
    }
    return merged;
}

} // namespace

Result<QList<NamedXic>> extractInBulk(const QList<XicTarget>& targets,
                                      const ScanSelection& scans,
                                      msreader::MsDataSourceInterface* source,
                                      const QSharedPointer<ProgressBarInterface>& progress)
{
    QList<QList<XicDimensions>> groups;
    for (const XicTarget& target : targets) {
        groups.append(target.members);
    }
    progress->setText(QStringLiteral("Extracting chromatograms"));
    ZEL_ASSIGN_OR_RETURN(
        const QList<QList<QPointF>> xics,
        BulkXicExtractor(source).xic(groups, sumOfMembers, scans.msLevel, scans.filter, progress));
    QList<NamedXic> named;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        named.append({targets[i].name, xics[i]});
    }
    return named;
}

Result<QList<NamedXic>> extractFromIndex(const QList<XicTarget>& targets,
                                         int maxIonCount,
                                         const QString& cacheDirectory,
                                         msreader::MsDataSourceInterface* source,
                                         const QSharedPointer<ProgressBarInterface>& progress,
                                         QString* what)
{
    TurboXicSettings settings;
    settings.maxIonCount = maxIonCount;
    progress->setText(QStringLiteral("Building the index"));
    ZEL_ASSIGN_OR_RETURN(const auto index,
                         indexWithCache(settings, cacheDirectory, source, progress, what));
    if (!index->isValid()) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("%1: an index needs at least two MS1 scans; leave out --turbo")
                .arg(source->dataSourceInformation().filePath));
    }
    QList<NamedXic> named;
    for (const XicTarget& target : targets) {
        ZEL_ASSIGN_OR_RETURN(const QList<QPointF> xic, retrieveTarget(*index, target));
        named.append({target.name, xic});
    }
    return named;
}

Result<QList<NamedXic>> extractIsotopes(const IsotopeTarget& target,
                                        msreader::MsDataSourceInterface* source)
{
    const auto aggregation = target.harmonicMean ? MultiIsotopeXic::XicAggregationWhm
                                                 : MultiIsotopeXic::XicAggregationSum;
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> xic,
                         MultiIsotopeXic().xic(target.neutralMass,
                                               target.charge,
                                               XicWindowFactory(),
                                               target.ppm,
                                               target.time.minimum().value_or(0.0),
                                               target.time.maximum().value_or(0.0),
                                               0,
                                               target.isotopeShare,
                                               source,
                                               aggregation,
                                               target.isDeamidated));
    const QString name = QStringLiteral("mass_%1_%2+")
                             .arg(QString::fromLatin1(roundTripText(target.neutralMass)),
                                  QString::number(target.charge));
    return QList<NamedXic>{{name, xic}};
}

} // namespace zel::tool
