#include "tools/io/FileCheck.h"
#include "tools/simulate/SimulatedPeptide.h"
#include "tools/simulate/SimulationSettingTable.h"
#include "tools/simulate/Simulator.h"
#include "tools/sources/mzml/MzmlWriter.h"
#include "tools/zel/cli/Command.h"
#include "tools/zel/cli/Messages.h"
#include "tools/zel/cli/SettingOptions.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

namespace zel::tool {

using simulate::SimulatedRun;
using simulate::SimulationSettings;

namespace {

struct SimulateOptions
{
    SettingOptions<SimulationSettings> settings;
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

/// Makes the peaks of a run that is too short for the default ones so narrow that more than a third
/// of it is left for their apexes, but no narrower than the scans can follow.
void narrowPeaks(const SettingOptions<SimulationSettings>& given, SimulationSettings* settings)
{
    constexpr double peakShare = 0.6;
    const double ofDrift = 2.0 * settings->driftMinutes;
    const double ofPeaks = simulate::leastRunMinutes(*settings) - ofDrift;
    const double wanted = peakShare * settings->durationMinutes() - ofDrift;
    const double factor =
        std::max(wanted / ofPeaks, settings->scanIntervalSeconds / settings->peakSigmaSeconds);
    if (factor >= 1.0) {
        return;
    }
    for (const auto& [name, field] :
         {std::pair("peakSigmaSeconds", &SimulationSettings::peakSigmaSeconds),
          {"peakTailSeconds", &SimulationSettings::peakTailSeconds},
          {"retentionJitterSeconds", &SimulationSettings::retentionJitterSeconds}}) {
        if (!given.isGiven(name)) {
            settings->*field =
                std::floor(settings->*field * factor * 100.0) / 100.0; // to read well
        }
    }
}

/// What was given, with defaults that suit it: a short run drifts less and has narrower peaks, and
/// a mobility peak is no narrower than the step between two scans.
SimulationSettings fittedSettings(const SimulateOptions& options)
{
    SimulationSettings settings;
    options.settings.copyGiven(&settings);
    if (!options.settings.isGiven("driftMinutes")) {
        settings.driftMinutes = std::min(settings.driftMinutes, settings.maxDriftMinutes());
    }
    if (settings.peptideCount > 0 &&
        simulate::leastRunMinutes(settings) >= settings.durationMinutes()) {
        narrowPeaks(options.settings, &settings);
    }
    if (!options.settings.isGiven("mobilitySigma")) {
        settings.mobilitySigma =
            std::max(settings.mobilitySigma, std::ceil(settings.mobilityStep() * 1e4) / 1e4);
    }
    return settings;
}

SimulationSettings settingsOf(const SimulateOptions& options)
{
    const SimulationSettings fitted = fittedSettings(options);
    SimulationSettings settings = options.noNoise ? fitted.withoutNoise() : fitted;
    settings.scanKind = options.profile ? msreader::PeakPickingFilter::Profile
                                        : msreader::PeakPickingFilter::Centroid;
    settings.resolutionModel = options.timeOfFlight ? simulate::ResolutionModel::TimeOfFlight
                                                    : simulate::ResolutionModel::Orbitrap;
    return settings;
}

io::CommandFiles filesOf(const SimulateOptions& options,
                         const SimulationSettings& settings,
                         const QString& output,
                         const QString& truthPath)
{
    io::CommandFiles files = {{}, {truthPath}};
    if (!settings.fastaPath.isEmpty()) {
        files.inputs.append(settings.fastaPath);
    }
    for (const std::string& path : {options.windows, options.matches}) {
        if (!path.empty()) {
            files.outputs.append(QString::fromStdString(path));
        }
    }
    for (int sample = 0; sample < settings.sampleCount; ++sample) {
        files.outputs.append(runPath(output, sample, settings.sampleCount));
    }
    return files;
}

/// "--drift becomes 0.3" for each default that fittedSettings has changed.
std::vector<std::string> adaptedDefaults(const SimulateOptions& options)
{
    const SimulationSettings settings = fittedSettings(options);
    std::vector<std::string> texts;
    for (const auto& setting : simulate::simulationSettings().settings) {
        const CLI::Option* const option = options.settings.option(setting.name);
        const SettingValue value = settingValue(setting, settings);
        if (option != nullptr && option->count() == 0 &&
            value != settingValue(setting, SimulationSettings())) {
            texts.push_back(option->get_name() + " becomes " + settingText(value).toStdString());
        }
    }
    return texts;
}

/// Refuses settings that contradict each other, naming options.
void checkTogether(const SimulateOptions& options)
{
    const SimulationSettings settings = settingsOf(options);
    if (const auto fault = settings.firstFault()) {
        const CLI::Option* const option = options.settings.option(fault->name);
        throw CLI::ValidationError((option != nullptr ? option->get_name() : fault->name) + ' ' +
                                   fault->reason.toStdString());
    }
    if (settings.mobilityScanCount > 0 && settings.firstMobility >= settings.lastMobility) {
        throw CLI::ValidationError("--mobility-end must be above --mobility-start");
    }
}

Error run(const SimulateOptions& options, const CommandContext& context)
{
    Error e;
    const SimulationSettings settings = settingsOf(options);
    for (const std::string& text : adaptedDefaults(options)) {
        tell(QStringLiteral("to suit the run, ") + QString::fromStdString(text));
    }
    const QString output = QString::fromStdString(options.output);
    msreader::MzmlWriterOptions writer;
    writer.frames = options.mobilityScansApart ? msreader::MzmlWriterOptions::Frames::ScanByScan
                                               : msreader::MzmlWriterOptions::Frames::Combined;
    const QString truthPath =
        options.truth.empty() ? defaultTruthPath(output) : QString::fromStdString(options.truth);
    ZEL_RETURN_IF_ERROR(io::checkFiles(filesOf(options, settings, output, truthPath)));
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

void addOutputs(CLI::App& command, SimulateOptions& options)
{
    command
        .add_option("-o,--output",
                    options.output,
                    "Run to write (mzML); with several samples NAME_1.mzML, ...")
        ->required()
        ->type_name("FILE");
    command
        .add_option("--truth",
                    options.truth,
                    "Table of what the runs hold (TSV); NAME.truth.tsv if not given")
        ->type_name("FILE");
    command
        .add_option("--windows-out",
                    options.windows,
                    "Table of windows around the ions, the strongest first, for xic --windows")
        ->type_name("FILE");
    command
        .add_option("--psms-out",
                    options.matches,
                    "Table of spectrum matches, one at the apex of each ion, for targeted --psms")
        ->type_name("FILE");
    command.add_flag("--mobility-scans-apart",
                     options.mobilityScansApart,
                     "Write one spectrum for each mobility scan, not one for each frame");
    command.add_flag("--profile", options.profile, "Write profile spectra instead of centroids");
    command.add_flag("--time-of-flight",
                     options.timeOfFlight,
                     "Resolving power is the same at all m/z; else it falls as of an Orbitrap");
    command.add_flag("--no-noise", options.noNoise, "Leave out all noise and background");
}

} // namespace

void addSimulateCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<SimulateOptions>();
    CLI::App* const command =
        tool.add_subcommand("simulate", "Make LC-MS runs of which everything is known");
    addOutputs(*command, *options);
    options->settings.addTo(*command, simulate::simulationSettings(), ~SettingReaders(0));
    command->callback([options, &chosen] {
        checkTogether(*options);
        chosen = [options](const CommandContext& context) { return run(*options, context); };
    });
}

} // namespace zel::tool
