#include "tools/io/FileCheck.h"
#include "tools/simulate/Simulator.h"
#include "tools/sources/mzml/MzmlWriter.h"
#include "tools/zel/cli/Command.h"

#include <CLI/CLI.hpp>
#include <QFileInfo>

#include <iostream>
#include <memory>

namespace zel::tool {

using simulate::SimulatedRun;
using simulate::SimulationSettings;

namespace {

struct SimulateOptions
{
    SimulationSettings settings;
    std::string fasta;
    std::string output;
    std::string truth;
    std::string windows;
    std::string matches;
    bool profile = false;
    bool timeOfFlight = false;
    bool noNoise = false;
    bool mobilityScansApart = false;
};

/// The file of one sample: the path itself, or with several samples "run_2.mzML" for the second of
/// "run.mzML".
QString runPath(const QString& path, int sampleIndex, int sampleCount)
{
    if (sampleCount == 1) {
        return path;
    }
    const qsizetype suffixLength =
        path.endsWith(QLatin1String(".mzML"), Qt::CaseInsensitive) ? 5 : 0;
    const qsizetype baseLength = path.size() - suffixLength;
    return path.left(baseLength) + QStringLiteral("_%1").arg(sampleIndex + 1) +
           path.mid(baseLength);
}

QString defaultTruthPath(const QString& path)
{
    const QFileInfo info(path);
    return info.path() + QLatin1Char('/') + info.completeBaseName() + QStringLiteral(".truth.tsv");
}

SimulationSettings settingsOf(const SimulateOptions& options)
{
    SimulationSettings settings =
        options.noNoise ? options.settings.withoutNoise() : options.settings;
    settings.fastaPath = QString::fromStdString(options.fasta);
    settings.scanKind = options.profile ? msreader::PeakPickingFilter::Profile
                                        : msreader::PeakPickingFilter::Centroid;
    settings.resolutionModel = options.timeOfFlight ? simulate::ResolutionModel::TimeOfFlight
                                                    : simulate::ResolutionModel::Orbitrap;
    return settings;
}

io::CommandFiles filesOf(const SimulateOptions& options,
                         const QString& output,
                         const QString& truthPath)
{
    io::CommandFiles files = {{}, {truthPath}};
    if (!options.fasta.empty()) {
        files.inputs.append(QString::fromStdString(options.fasta));
    }
    for (const std::string& path : {options.windows, options.matches}) {
        if (!path.empty()) {
            files.outputs.append(QString::fromStdString(path));
        }
    }
    const int sampleCount = options.settings.sampleCount;
    for (int sample = 0; sample < sampleCount; ++sample) {
        files.outputs.append(runPath(output, sample, sampleCount));
    }
    return files;
}

Error run(const SimulateOptions& options, const CommandContext& context)
{
    Error e;
    const SimulationSettings settings = settingsOf(options);
    if (settings.mobilityScanCount > 0 && settings.firstMobility >= settings.lastMobility) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("The mobility must rise from the first scan to the last"));
    }
    const QString output = QString::fromStdString(options.output);
    msreader::MzmlWriterOptions writer;
    writer.frames = options.mobilityScansApart ? msreader::MzmlWriterOptions::Frames::ScanByScan
                                               : msreader::MzmlWriterOptions::Frames::Combined;
    const QString truthPath =
        options.truth.empty() ? defaultTruthPath(output) : QString::fromStdString(options.truth);
    ZEL_RETURN_IF_ERROR(io::checkFiles(filesOf(options, output, truthPath)));
    context.progress->setText(QStringLiteral("Simulating"));
    QList<simulate::TrueIon> truth;
    QStringList runs;
    for (int sample = 0; sample < settings.sampleCount; ++sample) {
        ZEL_ASSIGN_OR_RETURN(const SimulatedRun simulated,
                             simulateRun(settings, sample, context.progress));
        const QString path = runPath(output, sample, settings.sampleCount);
        ZEL_RETURN_IF_ERROR(msreader::writeMzml(path, simulated.scans, writer, context.progress));
        truth += simulated.truth;
        runs += QFileInfo(path).fileName();
        std::cout << path.toStdString() << ": " << simulated.scans.size() << " scans, "
                  << simulated.truth.size() << " peptide ions\n";
    }
    ZEL_RETURN_IF_ERROR(simulate::writeTruth(truthPath, truth));
    std::cout << truthPath.toStdString() << ": the truth\n";
    if (!options.windows.empty()) {
        ZEL_RETURN_IF_ERROR(simulate::writeWindows(QString::fromStdString(options.windows), truth));
    }
    if (!options.matches.empty()) {
        ZEL_RETURN_IF_ERROR(
            simulate::writeMatches(QString::fromStdString(options.matches), truth, runs));
    }
    return e;
}

void addPeptideOptions(CLI::App& command, SimulateOptions& options)
{
    SimulationSettings& settings = options.settings;
    command.add_option("--seed", settings.seed, "Equal seeds and settings give equal runs")
        ->capture_default_str();
    command
        .add_option("--samples",
                    settings.sampleCount,
                    "Runs of the same peptides, with drift and gaps between them")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000));
    command.add_option(
        "--fasta", options.fasta, "Proteins to digest; random tryptic peptides if not given");
    command.add_option("--peptides", settings.peptideCount, "Number of peptides")
        ->capture_default_str();
    command
        .add_option("--isomers-apart",
                    settings.isomerDistance,
                    "How much later an isomer of each peptide elutes, in widths at half height; "
                    "0: none does")
        ->capture_default_str();
    command.add_option("--max-charge", settings.maxCharge, "Highest charge")->capture_default_str();
    command
        .add_option(
            "--intensity", settings.medianApexIntensity, "Median apex intensity of a peptide")
        ->capture_default_str();
}

void addRunOptions(CLI::App& command, SimulateOptions& options)
{
    SimulationSettings& settings = options.settings;
    command.add_option("--minutes", settings.endMinutes, "Length of the run, minutes")
        ->capture_default_str();
    command
        .add_option(
            "--scan-interval", settings.scanIntervalSeconds, "Time between MS1 scans, seconds")
        ->capture_default_str();
    command
        .add_option("--peak-sigma",
                    settings.peakSigmaSeconds,
                    "Standard deviation of a median peak without its tail, seconds")
        ->capture_default_str();
    command
        .add_option("--peak-tail", settings.peakTailSeconds, "Time constant of its tail, seconds")
        ->capture_default_str();
    command
        .add_option(
            "--drift", settings.driftMinutes, "Greatest retention shift between samples, minutes")
        ->capture_default_str();
}

void addMobilityOptions(CLI::App& command, SimulateOptions& options)
{
    SimulationSettings& settings = options.settings;
    command
        .add_option("--mobility-scans",
                    settings.mobilityScanCount,
                    "Mobility scans of a frame; 0: no mobility")
        ->capture_default_str();
    command
        .add_option(
            "--mobility-start", settings.firstMobility, "Mobility of the first, 1/K0, V s/cm2")
        ->capture_default_str();
    command.add_option("--mobility-end", settings.lastMobility, "Mobility of the last, above that")
        ->capture_default_str();
    command
        .add_option("--mobility-sigma",
                    settings.mobilitySigma,
                    "Standard deviation of a mobility peak, at least the step between two scans")
        ->capture_default_str();
    command.add_flag("--mobility-scans-apart",
                     options.mobilityScansApart,
                     "Write one spectrum for each mobility scan, not one for each frame");
}

void addInstrumentOptions(CLI::App& command, SimulateOptions& options)
{
    SimulationSettings& settings = options.settings;
    command.add_flag("--profile", options.profile, "Write profile spectra instead of centroids");
    command.add_option("--resolving-power", settings.resolvingPower, "Resolving power at m/z 200")
        ->capture_default_str();
    command.add_flag("--time-of-flight",
                     options.timeOfFlight,
                     "Resolving power is the same at all m/z; else it falls as of an Orbitrap");
    command
        .add_option("--min-intensity", settings.minIntensity, "Lowest intensity that is recorded")
        ->capture_default_str();
}

void addNoiseOptions(CLI::App& command, SimulateOptions& options)
{
    SimulationSettings& settings = options.settings;
    command
        .add_option("--mz-noise", settings.mzNoisePpm, "Standard deviation of m/z in a scan, ppm")
        ->capture_default_str();
    command
        .add_option("--background", settings.backgroundIonCount, "Ions that are there all the time")
        ->capture_default_str();
    command
        .add_option("--background-intensity",
                    settings.backgroundIonIntensity,
                    "Their median intensity in a scan or frame")
        ->capture_default_str();
    command
        .add_option("--stray-peaks",
                    settings.strayPeakCount,
                    "Mean number of stray peaks of a scan or frame")
        ->capture_default_str();
    command.add_option("--stray-intensity", settings.strayPeakIntensity, "Their mean intensity")
        ->capture_default_str();
    command.add_flag("--no-noise", options.noNoise, "Leave out all noise and background");
}

} // namespace

void addSimulateCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<SimulateOptions>();
    CLI::App* const command =
        tool.add_subcommand("simulate", "Make LC-MS runs of which everything is known");
    command
        ->add_option("-o,--output",
                     options->output,
                     "Run to write (mzML); with several samples NAME_1.mzML, ...")
        ->required();
    command->add_option("--truth",
                        options->truth,
                        "Table of what the runs hold (TSV); NAME.truth.tsv if not given");
    command->add_option("--windows-out",
                        options->windows,
                        "Table of windows around the ions, the strongest first, for xic --windows");
    command->add_option(
        "--psms-out",
        options->matches,
        "Table of spectrum matches, one at the apex of each ion, for targeted --psms");
    addPeptideOptions(*command, *options);
    addRunOptions(*command, *options);
    addMobilityOptions(*command, *options);
    addInstrumentOptions(*command, *options);
    addNoiseOptions(*command, *options);
    command->callback([options, &chosen] {
        chosen = [options](const CommandContext& context) { return run(*options, context); };
    });
}

} // namespace zel::tool
