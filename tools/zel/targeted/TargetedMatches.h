#pragma once

#include "ms_feature/finders/MsFeatureFinderBase.h"
#include "tools/identifications/MatchReport.h"
#include "tools/identifications/SpectrumMatch.h"
#include "tools/zel/cli/Batch.h"
#include "tools/zel/cli/RunFile.h"
#include "tools/zel/cli/WatchedRun.h"

#include <QHash>
#include <QList>
#include <QSet>

namespace zel::tool {

/// One of the runs in which features are looked for.
struct TargetedRun
{
    QString path;
    QString name; ///< see identifications::runName
    QSharedPointer<msreader::WatchedDataSource> source;
    math::ClosedMultiInterval<double, 6> times; ///< minutes
    MsFeatureFinderBase::PsmsByHash psms;
};

/// Opens the runs that can be opened and hold MS1 scans, all of one kind; the others go to the
/// batch. \return kBadParameterError for two runs of one name, between which matches could not
/// choose; kOperationCanceledError
Result<QList<TargetedRun>> openRuns(const QList<QString>& paths,
                                    const msreader::RunSelection& selection,
                                    const CommandContext& context,
                                    Batch* batch);

/// Hands spectrum matches to the runs that they name, as the library wants them: grouped by the
/// hash of their ion.
class MatchAssignment
{
public:
    /// \param runs    borrowed; their matches are filled
    /// \param anyRun  every match goes to every run, not only those that name no run
    MatchAssignment(QList<TargetedRun>* runs, bool anyRun, identifications::MatchReport* report);

    /// Hands out one match. What lies outside the times of a run, has no time, names another run or
    /// stands there already goes to the report.
    Error assign(const identifications::SpectrumMatch& match);

    /// How many of the matches are used in at least one run.
    int usedCount() const { return m_usedCount; }

    /// By run: the matches that are used in other runs, but lie outside this one.
    const QList<int>& outsideCounts() const { return m_outsideCounts; }

    /// The ions that come with more than one mass, such as "PEPTIDEK (Ox/15.9949, charge 2)".
    QStringList ionsOfSeveralMasses() const;

private:
    /// Why a match is not added to a run.
    struct Complaint
    {
        identifications::MatchReport::Reason reason =
            identifications::MatchReport::Reason::OtherRun;
        QString message;
    };

    Result<std::optional<double>> timeOf(const identifications::SpectrumMatch& match);
    bool add(qsizetype runIndex,
             const identifications::SpectrumMatch& match,
             double rtMinutes,
             Complaint* complaint);

    QList<TargetedRun>* m_runs;
    bool m_anyRun;
    identifications::MatchReport* m_report;
    int m_usedCount = 0;
    QSet<QString> m_otherRuns;
    QList<int> m_outsideCounts;                       ///< by run
    QList<QSet<QString>> m_seen;                      ///< by run
    QHash<qsizetype, QHash<QString, double>> m_times; ///< by run: of fragment spectra, by id
    QHash<QString, QSet<QString>> m_hashes;           ///< of the ions, by what they are called
};

} // namespace zel::tool
