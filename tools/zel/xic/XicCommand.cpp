#include "common/stable/NumberText.h"
#include "tools/io/FileCheck.h"
#include "tools/io/OutputFile.h"
#include "tools/io/TsvTable.h"
#include "tools/zel/cli/CommandLine.h"
#include "tools/zel/cli/Messages.h"
#include "tools/zel/cli/RunFile.h"
#include "tools/zel/cli/WatchedRun.h"
#include "tools/zel/xic/EmptyAnswers.h"
#include "tools/zel/xic/XicExtraction.h"

#include <QFileInfo>

#include <memory>
#include <vector>

namespace zel::tool {

using msreader::PeakPickingFilter;

namespace {

struct XicOptions
{
    std::string file;
    std::string windows;
    std::vector<double> mzs;
    double ppm = 10.0;
    std::string rt;
    int msLevel = 1;
    bool profile = false;
    bool turbo = false;
    std::string cache;
    int maxIonCount = 0; ///< 0: no limit
    std::string isotopes;
    double mass = 0.0;
    int charge = 0;
    double isotopeShare = 0.8;
    bool deamidated = false;
    std::string output;
    std::string plot;
    msreader::RunSelection selection;
};

using TimeSet = math::ClosedMultiInterval<double, 6>;

/// The targets of --windows, or of --mz, --ppm and --rt.
Result<QList<XicTarget>> targetsOf(const XicOptions& options)
{
    if (!options.windows.empty()) {
        const QString path = QString::fromStdString(options.windows);
        ZEL_ASSIGN_OR_RETURN(QList<XicTarget> windows, readXicWindows(path));
        if (windows.isEmpty()) {
            tell(path + QStringLiteral(": the table holds no windows"));
        }
        return windows;
    }
    const TimeSet time = options.rt.empty() ? TimeSet::unbounded() : parseTimeRange(options.rt);
    QList<XicTarget> targets;
    for (const double mz : options.mzs) {
        const QString name = QStringLiteral("mz_") + QString::fromLatin1(roundTripText(mz));
        targets.append({name, {XicDimensions(mzWindow(mz, options.ppm), time)}});
    }
    return targets;
}

/// The ion of --mass and --charge over the times of --rt, or over the whole run.
Result<IsotopeTarget> isotopeTargetOf(const XicOptions& options,
                                      msreader::MsDataSourceInterface* source)
{
    IsotopeTarget target;
    target.neutralMass = options.mass;
    target.charge = options.charge;
    target.ppm = options.ppm;
    target.isotopeShare = options.isotopeShare;
    target.harmonicMean = options.isotopes == "whm";
    target.isDeamidated = options.deamidated;
    if (options.rt.empty()) {
        ZEL_ASSIGN_OR_RETURN(target.time, source->retentionTimeRange());
    } else {
        target.time = parseTimeRange(options.rt);
    }
    return target;
}

Result<QList<NamedXic>> extract(const XicOptions& options,
                                const QList<XicTarget>& targets,
                                const msreader::MzmlDataSource& run,
                                msreader::WatchedDataSource* source,
                                const QSharedPointer<msreader::ScanProgress>& progress)
{
    if (!options.isotopes.empty()) {
        ZEL_ASSIGN_OR_RETURN(const IsotopeTarget target, isotopeTargetOf(options, source));
        return extractIsotopes(target, source, progress);
    }
    if (options.turbo) {
        QStringList notes;
        auto xics = extractFromIndex(targets,
                                     {options.maxIonCount,
                                      run.largestPointCount(1),
                                      QString::fromStdString(options.cache),
                                      options.selection.name()},
                                     source,
                                     progress,
                                     &notes);
        for (const QString& note : std::as_const(notes)) {
            tell(note);
        }
        return xics;
    }
    const auto filter = options.profile ? PeakPickingFilter::Profile : PeakPickingFilter::Centroid;
    return extractInBulk(targets, {options.msLevel, filter}, source, progress);
}

void writeTable(const QList<NamedXic>& xics, io::OutputFile& output)
{
    output << "name\trt_min\tintensity\n";
    for (const NamedXic& xic : xics) {
        const QByteArray name = io::tsvCell(xic.name.toUtf8()) + '\t';
        QByteArray rows;
        for (const QPointF& point : xic.points) {
            rows += name + roundTripText(point.x()) + '\t' + roundTripText(point.y()) + '\n';
        }
        output << rows;
    }
}

/// What the options name.
io::CommandFiles filesOf(const XicOptions& options)
{
    io::CommandFiles files = {{QString::fromStdString(options.file)},
                              {QString::fromStdString(options.output)}};
    if (!options.windows.empty()) {
        files.inputs.append(QString::fromStdString(options.windows));
    }
    if (!options.plot.empty()) {
        files.outputs.append(QString::fromStdString(options.plot));
    }
    return files;
}

Error run(const XicOptions& options, const CommandContext& context)
{
    Error e;
    ZEL_RETURN_IF_ERROR(io::checkFiles(filesOf(options)));
    ZEL_ASSIGN_OR_RETURN(const QList<XicTarget> targets, targetsOf(options));
    ZEL_ASSIGN_OR_RETURN(
        const auto table,
        io::OutputFile::openOrStandardOutput(QString::fromStdString(options.output)));
    std::unique_ptr<io::OutputFile> plot;
    if (!options.plot.empty()) {
        ZEL_ASSIGN_OR_RETURN(
            plot, io::OutputFile::openOrStandardOutput(QString::fromStdString(options.plot)));
    }
    const QString path = QString::fromStdString(options.file);
    ZEL_ASSIGN_OR_RETURN(const auto run,
                         openRunOfOneKind(path, options.selection, options.msLevel));
    const auto source = watched(run, context);
    ZEL_ASSIGN_OR_RETURN(const QList<NamedXic> xics,
                         extract(options, targets, *run, source.get(), context.progress));
    if (isCanceled(context.progress)) { // not every road passes it on
        ZEL_RETURN_ERROR(kOperationCanceledError);
    }
    tellEmptyXics(xics, source.get());

    writeTable(xics, *table);
    ZEL_RETURN_IF_ERROR(table->commit());
    if (plot) {
        *plot << chromatogramPage(QFileInfo(path).fileName(), xics);
        ZEL_RETURN_IF_ERROR(plot->commit());
    }
    return e;
}

/// Windows, times, scans and outputs.
void addWindowOptions(CLI::App& command, XicOptions& options)
{
    command.add_option("file", options.file, "mzML or mzXML file, plain or gzip-compressed")
        ->required()
        ->type_name("FILE");
    command
        .add_option(
            "--windows",
            options.windows,
            "Table of windows (TSV): name, mz and ppm or mz_start and mz_end, optional rt_start, "
            "rt_end (min), group")
        ->type_name("FILE");
    command.add_option("--mz", options.mzs, "m/z of an ion; may be given several times")
        ->check(isNumber({.lowest = SettingLimits::kAboveZero}));
    command
        .add_option("--ppm", options.ppm, "Half width of the window around --mz or an isotope, ppm")
        ->capture_default_str()
        ->check(isNumber({.lowest = 0}));
    command.add_option("--rt", options.rt, "Time range A-B, minutes; the whole run if not given")
        ->check(timeRangeValidator())
        ->type_name("A-B");
    command.add_option("--ms-level", options.msLevel, "MS level of the scans")
        ->capture_default_str()
        ->check(isWholeNumber(1, 10));
    command.add_flag(
        "--profile", options.profile, "Sum profile points where the file has them, not centroids");
    command
        .add_option("-o,--output",
                    options.output,
                    "Table of the chromatograms (TSV); standard output if not given")
        ->type_name("FILE");
    command.add_option("--plot", options.plot, "Drawing of the chromatograms (HTML)")
        ->type_name("FILE");
}

void addIndexOptions(CLI::App& command, XicOptions& options)
{
    CLI::Option* const turbo = command.add_flag(
        "--turbo", options.turbo, "Cut the chromatograms out of an index of the MS1 centroids");
    command.add_option("--cache", options.cache, "Folder where the index is kept between runs")
        ->type_name("FOLDER")
        ->needs(turbo);
    command
        .add_option("--max-ions",
                    options.maxIonCount,
                    "Most peaks of a scan that the index keeps; all if not given")
        ->check(isWholeNumber(1, kMostIons))
        ->needs(turbo);
    turbo->excludes(command.get_option("--profile"));
    turbo->excludes(command.get_option("--ms-level"));
}

void addIsotopeOptions(CLI::App& command, XicOptions& options)
{
    CLI::Option* const isotopes =
        command
            .add_option("--isotopes",
                        options.isotopes,
                        "Fold the isotopes of an ion: their sum, or harmonic mean")
            ->check(isOneOf({"sum", "whm"}));
    CLI::Option* const mass =
        command.add_option("--mass", options.mass, "Neutral monoisotopic mass of the ion, Da")
            ->check(isNumber({.lowest = SettingLimits::kAboveZero}))
            ->needs(isotopes);
    CLI::Option* const charge = command.add_option("--charge", options.charge, "Charge of the ion")
                                    ->check(isWholeNumber(1, 100))
                                    ->needs(isotopes);
    command
        .add_option("--isotope-share",
                    options.isotopeShare,
                    "Isotopes are taken until their shares exceed this")
        ->capture_default_str()
        ->check(isNumber({0, 1}))
        ->needs(isotopes);
    command.add_flag("--deamidated", options.deamidated, "--mass is that of the deamidated form")
        ->needs(isotopes);
    isotopes->needs(mass);
    isotopes->needs(charge);
    for (const char* const other : {"--mz", "--windows", "--turbo", "--profile", "--ms-level"}) {
        isotopes->excludes(command.get_option(other));
    }
}

} // namespace

void addXicCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<XicOptions>();
    CLI::App* const command = tool.add_subcommand("xic", "Extract ion chromatograms from a run");
    addWindowOptions(*command, *options);
    addRunSelection(*command, options->selection);
    addIsolationSelection(*command, options->selection);
    addIndexOptions(*command, *options);
    addIsotopeOptions(*command, *options);
    command->get_option("--windows")
        ->excludes(command->get_option("--mz"))
        ->excludes(command->get_option("--rt"));
    command->callback([options, &chosen] {
        if (options->windows.empty() && options->mzs.empty() && options->isotopes.empty()) {
            throw CLI::RequiredError("one of --windows, --mz and --isotopes");
        }
        chosen = [options](const CommandContext& context) { return run(*options, context); };
    });
}

} // namespace zel::tool
