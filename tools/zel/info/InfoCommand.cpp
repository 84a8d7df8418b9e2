#include "common/stable/NumberText.h"
#include "tools/io/OutputFile.h"
#include "tools/io/TsvTable.h"
#include "tools/zel/cli/Batch.h"
#include "tools/zel/cli/CommandLine.h"
#include "tools/zel/cli/RunFile.h"
#include "tools/zel/cli/WatchedRun.h"

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <vector>

namespace zel::tool {

using msreader::MsQuery;
using msreader::MsScanId;
using msreader::PeakPickingFilter;
using msreader::ScanInfo;

namespace {

/// The lowest and highest of the values seen.
struct Span
{
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void add(double value)
    {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    bool isEmpty() const { return low > high; }
};

/// What a run holds of one MS level.
struct LevelSummary
{
    long long spectrumCount = 0;
    long long peakCount = 0;
    long long profileCount = 0; ///< spectra that are stored as profile
    Span minutes;
    Span mz;
    Span mobility;
    msreader::ScanKinds kinds;
};

using RunSummary = std::map<int, LevelSummary>;

QByteArray kindText(const LevelSummary& level)
{
    if (level.profileCount == 0) {
        return "centroid";
    }
    return level.profileCount == level.spectrumCount ? "profile" : "mixed";
}

void addScan(const ScanInfo& info, const QList<QPointF>& points, RunSummary& summary)
{
    LevelSummary& level = summary[info.msLevel];
    ++level.spectrumCount;
    level.peakCount += points.size();
    level.profileCount += info.storedAs == PeakPickingFilter::Profile ? 1 : 0;
    level.minutes.add(info.retentionTimeMinutes);
    if (!points.isEmpty()) {
        level.mz.add(points.constFirst().x());
        level.mz.add(points.constLast().x());
    }
}

/// Counts peaks by mobility scan, since the spectrum of a whole frame joins peaks of equal m/z, and
/// adds the mobilities.
Error addMobility(msreader::MsDataSourceInterface* source, RunSummary& summary)
{
    for (auto& [msLevel, level] : summary) {
        const MsQuery everyMobilityScan = MsQuery::createByMsLevel(msLevel).setD2({});
        ZEL_ASSIGN_OR_RETURN(const QList<MsScanId> ids, source->scanIds(everyMobilityScan));
        level.peakCount = ids.isEmpty() ? level.peakCount : 0;
        for (const MsScanId& id : ids) {
            ZEL_ASSIGN_OR_RETURN(const QList<QPointF> points,
                                 source->scanData(MsQuery(id, PeakPickingFilter::Profile)));
            ZEL_ASSIGN_OR_RETURN(const ScanInfo info, source->scanInfo(id));
            level.peakCount += points.size();
            level.mobility.add(info.mobility.value_or(0.0));
        }
    }
    return kNoError;
}

/// Reads the whole run once, in the form in which it is stored.
Result<RunSummary> summarize(const QString& path, const CommandContext& context)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const auto run, openRun(path));
    const auto source = watched(run, context);
    ZEL_ASSIGN_OR_RETURN(
        const QList<MsScanId> ids,
        source->scanIds(MsQuery::createByTime(math::ClosedMultiInterval<double, 6>::unbounded(),
                                              math::ClosedMultiInterval<double, 10>::unbounded(),
                                              std::nullopt)));
    RunSummary summary;
    const msreader::ScanPass pass(ids.size(), QStringLiteral("Reading ") + path, context.progress);
    for (const MsScanId& id : ids) {
        ZEL_ASSIGN_OR_RETURN(const QList<QPointF> points,
                             source->scanData(MsQuery(id, PeakPickingFilter::Profile)));
        ZEL_ASSIGN_OR_RETURN(const ScanInfo info, source->scanInfo(id));
        addScan(info, points, summary);
    }
    ZEL_ASSIGN_OR_RETURN(const bool hasMobility, source->hasMobility());
    if (hasMobility) {
        ZEL_RETURN_IF_ERROR(addMobility(source.get(), summary));
    }
    for (auto& [msLevel, level] : summary) {
        level.kinds = run->scanKinds(msLevel);
    }
    return summary;
}

QByteArray spanText(const Span& span, int decimals)
{
    if (span.isEmpty()) {
        return "none";
    }
    return QByteArray::number(span.low, 'f', decimals) + "-" +
           QByteArray::number(span.high, 'f', decimals);
}

/// "positive", "positive and negative"; empty where the file states none.
QByteArray polarityText(const LevelSummary& level, const QByteArray& separator)
{
    QByteArrayList texts;
    for (const msreader::Polarity polarity : level.kinds.polarities) {
        texts.append(polarity == msreader::Polarity::Positive ? "positive" : "negative");
    }
    return texts.join(separator);
}

/// The FAIMS compensation voltages.
QByteArray voltageText(const LevelSummary& level, const QByteArray& separator)
{
    QByteArrayList texts;
    for (const double voltage : level.kinds.compensationVoltages) {
        texts.append(roundTripText(voltage));
    }
    return texts.join(separator);
}

/// What commands tell scans apart by.
void writeKinds(const LevelSummary& level, io::OutputFile& output)
{
    const auto& windows = level.kinds.isolationWindows;
    if (!level.kinds.polarities.isEmpty()) {
        output << ", " + polarityText(level, " and ");
    }
    if (!level.kinds.compensationVoltages.isEmpty()) {
        output << ", FAIMS " + voltageText(level, ", ") + " V";
    }
    if (!windows.isEmpty()) {
        output << ", " + QByteArray::number(windows.size()) +
                      (windows.size() == 1 ? " isolation window" : " isolation windows");
    }
}

void writeForReading(const QByteArray& path, const RunSummary& summary, io::OutputFile& output)
{
    output << path + "\n";
    for (const auto& [msLevel, level] : summary) {
        output << "  MS" + QByteArray::number(msLevel) + ": " +
                      QByteArray::number(level.spectrumCount) + " spectra (" + kindText(level) +
                      "), " + QByteArray::number(level.peakCount) + " peaks, " +
                      spanText(level.minutes, 3) + " min, m/z " + spanText(level.mz, 4);
        if (!level.mobility.isEmpty()) {
            output << ", mobility " + spanText(level.mobility, 4);
        }
        writeKinds(level, output);
        output << "\n";
    }
}

void writeRows(const QByteArray& path, const RunSummary& summary, io::OutputFile& output)
{
    const auto cells = [](const Span& span) {
        return span.isEmpty() ? QByteArray("\t\t")
                              : '\t' + roundTripText(span.low) + '\t' + roundTripText(span.high);
    };
    for (const auto& [msLevel, level] : summary) {
        output << io::tsvCell(path) + '\t' + QByteArray::number(msLevel) + '\t' +
                      QByteArray::number(level.spectrumCount) + '\t' +
                      QByteArray::number(level.peakCount) + cells(level.minutes) + cells(level.mz) +
                      '\t' + kindText(level) + cells(level.mobility) + '\t' +
                      polarityText(level, ",") + '\t' + voltageText(level, ",") + '\t' +
                      QByteArray::number(level.kinds.isolationWindows.size()) + '\n';
    }
}

struct InfoOptions
{
    std::vector<std::string> files;
    bool tsv = false;
};

Error run(const InfoOptions& options, const CommandContext& context)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const auto output, io::OutputFile::openOrStandardOutput({}));
    if (options.tsv) {
        *output << "file\tms_level\tspectra\tpeaks\trt_min\trt_max\tmz_min\tmz_max\tkind\tmobility_"
                   "min\tmobility_max\tpolarity\tfaims_v\tisolation_windows\n";
    }
    const Error failure = forEachRun(options.files, context, [&](const std::string& file) -> Error {
        ZEL_ASSIGN_OR_RETURN(const RunSummary summary,
                             summarize(QString::fromStdString(file), context));
        (options.tsv ? writeRows
                     : writeForReading)(QByteArray::fromStdString(file), summary, *output);
        return kNoError;
    });
    ZEL_RETURN_IF_ERROR(output->commit());
    return failure;
}

} // namespace

void addInfoCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<InfoOptions>();
    CLI::App* const command =
        tool.add_subcommand("info", "Show what runs hold: spectra, peaks, ranges by MS level");
    command->add_option("files", options->files, "mzML or mzXML files, plain or gzip-compressed")
        ->required()
        ->type_name("FILE");
    command->add_flag(
        "--tsv", options->tsv, "Print a table, one row per MS level, instead of text");
    command->callback([options, &chosen] {
        chosen = [options](const CommandContext& context) { return run(*options, context); };
    });
}

} // namespace zel::tool
