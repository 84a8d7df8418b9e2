#include "BulkXicExtractor.h"
#include "common/stable/NumberText.h"
#include "tools/sources/MzmlDataSource.h"
#include "tools/zel/ChromatogramPlot.h"
#include "tools/zel/Command.h"
#include "tools/zel/CommandLine.h"
#include "tools/zel/TextOutput.h"
#include "tools/zel/XicWindows.h"

#include <QFileInfo>

#include <memory>
#include <numeric>
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
    std::string output;
    std::string plot;
};

/// The targets of the arguments --mz, --ppm and --rt.
QList<XicTarget> targetsOfArguments(const XicOptions& options)
{
    using TimeSet = math::ClosedMultiInterval<double, 6>;
    const TimeSet time = options.rt.empty() ? TimeSet::unbounded() : parseTimeRange(options.rt);
    QList<XicTarget> targets;
    for (const double mz : options.mzs) {
        const QString name = QStringLiteral("mz_") + QString::fromLatin1(roundTripText(mz));
        targets.append({name, {XicDimensions(mzWindow(mz, options.ppm), time)}});
    }
    return targets;
}

double sumOfMembers(int /*groupIndex*/, const QList<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0);
}

Result<QList<NamedXic>> extract(const XicOptions& options,
                                const QList<XicTarget>& targets,
                                msreader::MsDataSourceInterface* source,
                                const QSharedPointer<ProgressBarInterface>& progress)
{
    QList<QList<XicDimensions>> groups;
    for (const XicTarget& target : targets) {
        groups.append(target.members);
    }
    progress->setText(QStringLiteral("Extracting chromatograms"));
    const auto filter = options.profile ? PeakPickingFilter::Profile : PeakPickingFilter::Centroid;
    ZEL_ASSIGN_OR_RETURN(
        const QList<QList<QPointF>> xics,
        BulkXicExtractor(source).xic(groups, sumOfMembers, options.msLevel, filter, progress));
    QList<NamedXic> named;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        named.append({targets[i].name, xics[i]});
    }
    return named;
}

void writeTable(const QList<NamedXic>& xics, TextOutput& output)
{
    output << "name\trt_min\tintensity\n";
    for (const NamedXic& xic : xics) {
        const QByteArray name = xic.name.toUtf8() + '\t';
        QByteArray rows;
        for (const QPointF& point : xic.points) {
            rows += name + roundTripText(point.x()) + '\t' + roundTripText(point.y()) + '\n';
        }
        output << rows;
    }
}

Error run(const XicOptions& options, const CommandContext& context)
{
    Error e;
    QList<XicTarget> targets = targetsOfArguments(options);
    if (!options.windows.empty()) {
        ZEL_ASSIGN_OR_RETURN(targets, readXicWindows(QString::fromStdString(options.windows)));
    }
    // The outputs are opened first, so that a wrong path does not cost the whole extraction.
    ZEL_ASSIGN_OR_RETURN(const auto table,
                         TextOutput::open(QString::fromStdString(options.output)));
    std::unique_ptr<TextOutput> plot;
    if (!options.plot.empty()) {
        ZEL_ASSIGN_OR_RETURN(plot, TextOutput::open(QString::fromStdString(options.plot)));
    }
    const QString path = QString::fromStdString(options.file);
    ZEL_ASSIGN_OR_RETURN(const auto source, msreader::MzmlDataSource::open(path));
    ZEL_RETURN_IF_ERROR(checkHasMsLevel(source.get(), path, options.msLevel));
    ZEL_ASSIGN_OR_RETURN(const QList<NamedXic> xics,
                         extract(options, targets, source.get(), context.progress));

    writeTable(xics, *table);
    ZEL_RETURN_IF_ERROR(table->commit());
    if (plot) {
        *plot << chromatogramPage(QFileInfo(path).fileName(), xics);
        ZEL_RETURN_IF_ERROR(plot->commit());
    }
    return e;
}

} // namespace

void addXicCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<XicOptions>();
    CLI::App* const command = tool.add_subcommand("xic", "Extract ion chromatograms from a run");
    command->add_option("file", options->file, "mzML or mzXML file, plain or gzip-compressed")
        ->required();
    CLI::Option* const windows =
        command->add_option("--windows",
                            options->windows,
                            "Table of windows (TSV): name, mz and ppm or mz_start and mz_end, "
                            "optional rt_start, rt_end (min), group");
    CLI::Option* const mz =
        command->add_option("--mz", options->mzs, "m/z of an ion; may be given several times")
            ->check(CLI::PositiveNumber);
    command->add_option("--ppm", options->ppm, "Half width of the window around --mz, ppm")
        ->capture_default_str()
        ->check(CLI::NonNegativeNumber)
        ->needs(mz);
    command
        ->add_option(
            "--rt", options->rt, "Time range A-B around --mz, minutes; the whole run if not given")
        ->check(timeRangeValidator())
        ->needs(mz);
    command->add_option("--ms-level", options->msLevel, "MS level of the scans")
        ->capture_default_str()
        ->check(CLI::Range(1, 10));
    command->add_flag(
        "--profile", options->profile, "Sum profile points where the file has them, not centroids");
    command->add_option("-o,--output",
                        options->output,
                        "Table of the chromatograms (TSV); standard output if not given");
    command->add_option("--plot", options->plot, "Drawing of the chromatograms (HTML)");
    windows->excludes(mz);
    command->callback([options, windows, mz, &chosen] {
        if (windows->empty() && mz->empty()) {
            throw CLI::RequiredError("--windows or --mz");
        }
        chosen = [options](const CommandContext& context) { return run(*options, context); };
    });
}

} // namespace zel::tool
