#include "tools/zel/targeted/TargetedMatches.h"

#include "common/stable/NumberText.h"
#include "tools/identifications/PeptideText.h"

#include <QRegularExpression>

#include <algorithm>

namespace zel::tool {

using identifications::MatchReport;
using identifications::SpectrumMatch;
using msreader::MsQuery;
using Reason = MatchReport::Reason;

namespace {

/// What rounding in a table may put outside the run, minutes.
constexpr double kTimeSlackMinutes = 0.01;

QString numberText(double value)
{
    return QString::fromLatin1(roundTripText(value));
}

/// What an ion is called, whatever its mass.
QString nameOf(const SpectrumMatch& match)
{
    const QString modifications =
        match.modifications.isEmpty() ? QString() : match.modifications + QLatin1String(", ");
    return QStringLiteral("%1 (%2charge %3)")
        .arg(match.sequence, modifications, QString::number(match.charge));
}

PeptideSpectrumMatch psmOf(const SpectrumMatch& match, double rtMinutes)
{
    PeptideSpectrumMatch psm;
    psm.setSequence(match.sequence);
    psm.setTarnicStyleMods(match.modifications);
    psm.setCharge(match.charge);
    psm.setCalcMz(match.mz);
    psm.setScanTimeMinutes(rtMinutes);
    psm.setScore(match.score);
    // The readers have checked the text.
    const Result<double> shiftsDa = identifications::sumOfMassShifts(match.modifications);
    psm.setWtCalcMr(psm.calcMr() - (shiftsDa.isOk() ? shiftsDa.value() : 0.0));
    if (!psm.isWildType()) {
        psm.setWtPeptideHash(
            PeptideSpectrumMatch::toHash(match.sequence, {}, psm.wtCalcMr(), match.charge));
    }
    return psm;
}

/// The ids under which a spectrum may be named: its native id, and its scan number alone.
QStringList namesOf(const QString& spectrumId)
{
    static const QRegularExpression scanNumber(QStringLiteral(R"(\bscan=(\d+))"));
    QStringList names = {spectrumId};
    const QRegularExpressionMatch match = scanNumber.match(spectrumId);
    if (match.hasMatch()) {
        names.append(QLatin1String("scan=") + match.captured(1));
    }
    return names;
}

/// The times of all fragment spectra by the names of the spectra.
Result<QHash<QString, double>> fragmentTimes(msreader::MsDataSourceInterface* source)
{
    const MsQuery every = MsQuery::createByTime(math::ClosedMultiInterval<double, 6>::unbounded(),
                                                math::ClosedMultiInterval<double, 10>::unbounded(),
                                                {});
    ZEL_ASSIGN_OR_RETURN(const auto ids, source->scanIds(every));
    QHash<QString, double> times;
    for (const msreader::MsScanId& id : ids) {
        ZEL_ASSIGN_OR_RETURN(const auto info, source->scanInfo(id));
        if (info.msLevel > 1) {
            for (const QString& name : namesOf(info.nativeId)) {
                times.insert(name, info.retentionTimeMinutes);
            }
        }
    }
    return times;
}

Result<TargetedRun> openTargetedRun(const QString& path,
                                    const msreader::RunSelection& selection,
                                    const CommandContext& context)
{
    TargetedRun run;
    run.path = path;
    run.name = identifications::runName(path);
    ZEL_ASSIGN_OR_RETURN(const auto file, openRunOfOneKind(path, selection, 1));
    run.source = watched(file, context);
    ZEL_ASSIGN_OR_RETURN(run.times, run.source->retentionTimeRange());
    return run;
}

} // namespace

Result<QList<TargetedRun>> openRuns(const QList<QString>& paths,
                                    const msreader::RunSelection& selection,
                                    const CommandContext& context,
                                    Batch* batch)
{
    QSet<QString> names;
    QList<TargetedRun> runs;
    for (const QString& path : paths) {
        const QString name = identifications::runName(path);
        if (names.contains(name)) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("two runs are called %1").arg(name));
        }
        names.insert(name);
        const Result<TargetedRun> run = openTargetedRun(path, selection, context);
        if (isCanceled(context.progress)) {
            ZEL_RETURN_ERROR(kOperationCanceledError);
        }
        if (run.isOk()) {
            runs.append(run.value());
        } else {
            batch->addFailure(path, run.error());
        }
    }
    return runs;
}

MatchAssignment::MatchAssignment(QList<TargetedRun>* runs, bool anyRun, MatchReport* report)
    : m_runs(runs)
    , m_anyRun(anyRun)
    , m_report(report)
    , m_outsideCounts(runs->size())
    , m_seen(runs->size())
{}

Error MatchAssignment::assign(const SpectrumMatch& match)
{
    const QString name = identifications::runName(match.run);
    const bool isNamed = std::ranges::find(*m_runs, name, &TargetedRun::name) != m_runs->end();
    if (!m_anyRun && !match.run.isEmpty() && !isNamed) {
        const bool isNew = !m_otherRuns.contains(name);
        m_otherRuns.insert(name);
        m_report->leaveOut(Reason::OtherRun,
                           isNew ? QStringLiteral("%1: run %2 was not given").arg(match.place, name)
                                 : QString());
        return kNoError;
    }
    ZEL_ASSIGN_OR_RETURN(const std::optional<double> rtMinutes, timeOf(match));
    if (!rtMinutes) {
        m_report->leaveOut(Reason::Time, match.place + QLatin1String(": it has no time"));
        return kNoError;
    }
    Complaint complaint;
    bool isUsed = false;
    QList<qsizetype> outside;
    for (qsizetype i = 0; i < m_runs->size(); ++i) {
        const TargetedRun& run = (*m_runs)[i];
        if (m_anyRun || match.run.isEmpty() || run.name == name) {
            const bool isAdded = add(i, match, *rtMinutes, &complaint);
            if (!isAdded && complaint.reason == Reason::OutsideRun) {
                outside.append(i);
            }
            isUsed = isUsed || isAdded;
        }
    }
    if (isUsed) {
        ++m_usedCount;
        for (const qsizetype i : outside) {
            ++m_outsideCounts[i];
        }
    } else {
        m_report->leaveOut(complaint.reason, complaint.message);
    }
    return kNoError;
}

/// The time that the match gives, or else that of its spectrum in the run that it names, or in the
/// only one that there is.
Result<std::optional<double>> MatchAssignment::timeOf(const SpectrumMatch& match)
{
    if (match.rtMinutes) {
        return match.rtMinutes;
    }
    const QString name = identifications::runName(match.run);
    for (qsizetype i = 0; i < m_runs->size(); ++i) {
        const TargetedRun& run = (*m_runs)[i];
        if (run.name != name && m_runs->size() > 1) {
            continue;
        }
        if (!m_times.contains(i)) {
            ZEL_ASSIGN_OR_RETURN(m_times[i], fragmentTimes(run.source.get()));
        }
        for (const QString& spectrum : namesOf(match.spectrumId)) {
            const auto found = m_times[i].constFind(spectrum);
            if (found != m_times[i].cend()) {
                return std::optional(*found);
            }
        }
    }
    return std::optional<double>();
}

/// Adds the match to the run unless something speaks against it.
bool MatchAssignment::add(qsizetype runIndex,
                          const SpectrumMatch& match,
                          double rtMinutes,
                          Complaint* complaint)
{
    TargetedRun& run = (*m_runs)[runIndex];
    const double start = run.times.minimum().value_or(0.0);
    const double end = run.times.maximum().value_or(0.0);
    if (rtMinutes < start - kTimeSlackMinutes || rtMinutes > end + kTimeSlackMinutes) {
        *complaint = {Reason::OutsideRun,
                      QStringLiteral("%1: the time %2 min lies outside run %3, %4 to %5 min")
                          .arg(match.place,
                               QString::number(rtMinutes),
                               run.name,
                               QString::number(start),
                               QString::number(end))};
        return false;
    }
    const PeptideSpectrumMatch psm = psmOf(match, rtMinutes);
    const QString hash = psm.peptideHash();
    // A table may name a match once for each of its proteins.
    const QString key =
        QStringList({match.run.isEmpty() ? run.name : identifications::runName(match.run),
                     hash,
                     numberText(rtMinutes)})
            .join(u'\t');
    if (m_seen[runIndex].contains(key)) {
        *complaint = {Reason::Duplicate,
                      QStringLiteral("%1: %2 with charge %3 at %4 min stands there already")
                          .arg(match.place,
                               match.sequence,
                               QString::number(match.charge),
                               QString::number(rtMinutes))};
        return false;
    }
    m_seen[runIndex].insert(key);
    m_hashes[nameOf(match)].insert(hash);
    run.psms[hash].append(psm);
    return true;
}

QStringList MatchAssignment::ionsOfSeveralMasses() const
{
    QStringList ions;
    for (auto ion = m_hashes.cbegin(); ion != m_hashes.cend(); ++ion) {
        if (ion.value().size() > 1) {
            ions.append(ion.key());
        }
    }
    ions.sort();
    return ions;
}

} // namespace zel::tool
