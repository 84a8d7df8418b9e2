#include "tools/zel/xic/XicExtraction.h"

#include "BulkXicExtractor.h"
#include "MultiIsotopeXic.h"
#include "common/stable/NumberText.h"
#include "tools/zel/xic/IndexCache.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

namespace zel::tool {

namespace {

double sumOfMembers(int /*groupIndex*/, const QList<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0);
}

/// The sum of the chromatograms of a target's boxes over the union of their times.
Result<QList<QPointF>> retrieveTarget(const TurboXic& index, const XicTarget& target)
{
    // Scans of one time stay apart: the second number counts them.
    std::map<std::pair<double, int>, double> sums;
    for (const XicDimensions& box : target.members) {
        ZEL_ASSIGN_OR_RETURN(QList<QPointF> xic, index.retrieveXic(box));
        // Where no scan lies in the times, the index gives the one beside them.
        xic.removeIf([&box](const QPointF& p) { return !box.timeInterval().contains(p.x()); });
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
                                      msreader::WatchedDataSource* source,
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
                                         const IndexOptions& options,
                                         msreader::WatchedDataSource* source,
                                         const QSharedPointer<msreader::ScanProgress>& progress,
                                         QStringList* notes)
{
    TurboXicSettings settings;
    const qsizetype wanted = options.maxIonCount > 0 ? options.maxIonCount : options.largestScan;
    settings.maxIonCount = static_cast<int>(std::clamp<qsizetype>(wanted, 1, kMostIons));
    if (settings.maxIonCount < options.largestScan) {
        notes->append(QStringLiteral("--max-ions %1 keeps the highest peaks only: the largest scan "
                                     "has %2 points")
                          .arg(settings.maxIonCount)
                          .arg(options.largestScan));
    }
    ZEL_ASSIGN_OR_RETURN(const auto ids, source->scanIds(msreader::MsQuery::createByMsLevel(1)));
    const msreader::ScanPass pass(ids.size(), QStringLiteral("Building the index"), progress);
    ZEL_ASSIGN_OR_RETURN(
        const RunIndex run,
        indexOfRun(settings, options.cacheDirectory, options.selection, source, progress));
    notes->append(run.notes);
    if (!run.index->isValid()) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("%1: an index needs at least two MS1 scans; leave out --turbo")
                .arg(source->dataSourceInformation().filePath));
    }
    QList<NamedXic> named;
    for (const XicTarget& target : targets) {
        ZEL_ASSIGN_OR_RETURN(const QList<QPointF> xic, retrieveTarget(*run.index, target));
        named.append({target.name, xic});
    }
    return named;
}

Result<QList<NamedXic>> extractIsotopes(const IsotopeTarget& target,
                                        msreader::WatchedDataSource* source,
                                        const QSharedPointer<msreader::ScanProgress>& progress)
{
    const QString name = QStringLiteral("mass_%1_%2+")
                             .arg(QString::fromLatin1(roundTripText(target.neutralMass)),
                                  QString::number(target.charge));
    const auto inTimes = msreader::MsQuery::createByTime(
        target.time, math::ClosedMultiInterval<double, 10>::unbounded(), 1);
    ZEL_ASSIGN_OR_RETURN(const auto ids, source->scanIds(inTimes));
    if (ids.isEmpty()) { // nothing to fold
        return QList<NamedXic>{{name, {}}};
    }
    ZEL_ASSIGN_OR_RETURN(const auto all, source->scanIds(msreader::MsQuery::createByMsLevel(1)));
    // Two forms of the ion, and the base peaks of the whole run.
    const msreader::ScanPass pass(
        2 * ids.size() + all.size(), QStringLiteral("Extracting isotopes"), progress);
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
    return QList<NamedXic>{{name, xic}};
}

} // namespace zel::tool
