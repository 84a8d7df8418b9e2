#include "tools/identifications/SpectrumMatchFile.h"
#include "tools/io/FileCheck.h"
#include "tools/io/OutputFile.h"
#include "tools/zel/cli/Batch.h"
#include "tools/zel/cli/CommandLine.h"
#include "tools/zel/cli/Messages.h"
#include "tools/zel/targeted/TargetedDiagrams.h"
#include "tools/zel/targeted/TargetedFeatures.h"

#include <algorithm>
#include <memory>

namespace zel::tool {

using identifications::MatchReport;
using identifications::SpectrumMatchFile;

namespace {

QStringList texts(const std::vector<std::string>& values)
{
    QStringList list;
    for (const std::string& value : values) {
        list.append(QString::fromStdString(value));
    }
    return list;
}

bool isAligned(const TargetedOptions& options)
{
    return options.runs.size() > 1 &&
           alignmentSettings(options).mode != Ms1FeatureAlignSettings::Mode::Disabled;
}

/// Tells what became of the matches; the details of those that were left out come first.
void tellMatches(const QList<TargetedRun>& runs,
                 const MatchReport& report,
                 const MatchAssignment& assignment)
{
    for (const QString& message : report.messages()) {
        tell(message);
    }
    for (qsizetype i = 0; i < runs.size(); ++i) {
        if (assignment.outsideCounts()[i] > 0) {
            tell(QStringLiteral("%1 matches lie outside run %2 and are used in others only")
                     .arg(assignment.outsideCounts()[i])
                     .arg(runs[i].name));
        }
    }
    const QStringList doubtful = assignment.ionsOfSeveralMasses();
    if (!doubtful.isEmpty()) {
        tell(QStringLiteral("%1 ions come with several masses, such as %2; each mass counts as an "
                            "ion of its own (give calculated masses, not measured ones)")
                 .arg(doubtful.size())
                 .arg(doubtful.constFirst()));
    }
    QString line = QStringLiteral("%1 matches are used").arg(assignment.usedCount());
    if (report.totalCount() > 0) {
        line += QStringLiteral(", %1 left out: %2").arg(report.totalCount()).arg(report.summary());
    }
    tell(line);
}

/// Fills the matches of the runs out of all files.
Error readMatches(const TargetedOptions& options, QList<TargetedRun>* runs)
{
    Error e;
    MatchReport report;
    MatchAssignment assignment(runs, options.anyRun, &report);
    for (const QString& path : texts(options.psms)) {
        ZEL_ASSIGN_OR_RETURN(const SpectrumMatchFile file,
                             identifications::readSpectrumMatches(
                                 path, QString::fromStdString(options.score), &report));
        if (!file.unknownColumns.isEmpty()) {
            tell(QStringLiteral("%1: columns that are not read: %2")
                     .arg(path, file.unknownColumns.join(QLatin1String(", "))));
        }
        for (const identifications::SpectrumMatch& match : file.matches) {
            ZEL_RETURN_IF_ERROR(assignment.assign(match));
        }
    }
    tellMatches(*runs, report, assignment);
    if (assignment.usedCount() == 0 && report.totalCount() > 0) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("no match is left to look for in the runs") +
                             QLatin1String(report.count(MatchReport::Reason::OtherRun) > 0
                                               ? " (--any-run takes those of other runs too)"
                                               : ""));
    }
    return e;
}

void tellFeatures(const QList<TargetedRun>& runs,
                  const QList<FeaturesByHash>& features,
                  const AlignmentCounts& counts)
{
    for (qsizetype i = 0; i < runs.size(); ++i) {
        tell(QStringLiteral("%1: features for %2 of %3 ions")
                 .arg(runs[i].name,
                      QString::number(features[i].size()),
                      QString::number(runs[i].psms.size())));
    }
    const int emptyCount = intervalsWithoutApex(features);
    if (emptyCount > 0) {
        tell(QStringLiteral(
                 "%1 intervals have no apex: there is no signal, or the finder cannot say")
                 .arg(emptyCount));
    }
    if (counts.aligned + counts.failed > 0) {
        tell(QStringLiteral("%1 ions aligned, %2 left as they were since their runs are too unlike")
                 .arg(counts.aligned)
                 .arg(counts.failed));
    }
}

Error run(const TargetedOptions& options, const CommandContext& context)
{
    Error e;
    const QString output = QString::fromStdString(options.output);
    const QString diagrams = QString::fromStdString(options.diagrams);
    const QString finderDiagrams = isAdaptive(options) ? diagrams : QString();
    const QString alignmentDiagrams = isAligned(options) ? alignmentPagePath(diagrams) : QString();
    io::CommandFiles files = {texts(options.runs) + texts(options.psms), {output}};
    for (const QString& path : {finderDiagrams, alignmentDiagrams}) {
        if (!path.isEmpty()) {
            files.outputs.append(path);
        }
    }
    ZEL_RETURN_IF_ERROR(io::checkFiles(files));
    ZEL_ASSIGN_OR_RETURN(const auto table, io::OutputFile::openOrStandardOutput(output));
    Batch batch(static_cast<qsizetype>(options.runs.size()), context);
    ZEL_ASSIGN_OR_RETURN(QList<TargetedRun> runs,
                         openRuns(texts(options.runs), options.selection, context, &batch));
    if (runs.isEmpty()) {
        return batch.result();
    }
    ZEL_RETURN_IF_ERROR(readMatches(options, &runs));

    ZEL_ASSIGN_OR_RETURN(const DiagramPage finderPage, DiagramPage::open(finderDiagrams));
    ZEL_ASSIGN_OR_RETURN( // a run that is left alone has no page
        const DiagramPage alignmentPage,
        DiagramPage::open(runs.size() > 1 ? alignmentDiagrams : QString()));
    const Drawing drawing = {hashesToDraw(runs, options.maxDiagramIons),
                             finderPage.libraryPath(),
                             alignmentPage.libraryPath()};
    ZEL_ASSIGN_OR_RETURN(QList<FeaturesByHash> features,
                         findFeatures(options, drawing, runs, context, &batch));
    if (batch.failureCount() == static_cast<qsizetype>(options.runs.size())) {
        return batch.result();
    }
    ZEL_ASSIGN_OR_RETURN(const AlignmentCounts counts,
                         alignFeatures(options, drawing, &features, context.progress));

    if (isCanceled(context.progress)) {
        ZEL_RETURN_ERROR(kOperationCanceledError);
    }
    *table << featureTable(runs, features);
    ZEL_RETURN_IF_ERROR(table->commit());
    ZEL_RETURN_IF_ERROR(finderPage.commit());
    ZEL_RETURN_IF_ERROR(alignmentPage.commit());
    tellFeatures(runs, features, counts);
    return batch.result();
}

/// What the single options cannot check by themselves.
void checkTogether(const TargetedOptions& options)
{
    if (!isAdaptive(options) && !isAligned(options) && !options.diagrams.empty()) {
        throw CLI::ValidationError(
            "--diagrams needs --mode adaptive or adaptive-v2, or runs to align");
    }
    using Folding = MsFeatureFinderSettings::MultiIsotopeMethod;
    const MsFeatureFinderSettings settings = finderSettings(options);
    if (options.profile && settings.multiIsotopeMethod == Folding::WeightedHarmonicMean) {
        throw CLI::ValidationError(
            "--profile cannot be had with --multi-isotope-method whm, which takes centroids");
    }
    if (!std::ranges::is_sorted(settings.isotopeSelector.isotopeMasses())) {
        throw CLI::ValidationError("--isotope-selector needs ascending masses");
    }
}

} // namespace

void addTargetedCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<TargetedOptions>();
    CLI::App* const command = tool.add_subcommand(
        "targeted", "Find the MS1 features of identified peptides, and align them across runs");
    addTargetedOptions(*command, *options);
    command->callback([options, &chosen] {
        checkTogether(*options);
        chosen = [options](const CommandContext& context) { return run(*options, context); };
    });
}

} // namespace zel::tool
