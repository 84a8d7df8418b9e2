#include "common/stable/NumberText.h"
#include "tools/io/FileCheck.h"
#include "tools/io/OutputFile.h"
#include "tools/zel/cli/CommandLine.h"
#include "tools/zel/cli/Messages.h"
#include "tools/zel/cli/RunFile.h"
#include "tools/zel/cli/WatchedRun.h"
#include "turbo/xim/TurboXim.h"

#include <QMap>

#include <algorithm>
#include <limits>
#include <memory>

namespace zel::tool {

using msreader::MsQuery;
using msreader::MsScanId;
using msreader::PeakPickingFilter;

namespace {

struct XimOptions
{
    std::string file;
    long long frame = 0;
    std::string mz;
    std::string output;
    msreader::RunSelection selection;
};

/// The mobility scans of one frame and the mobility of each.
struct Frame
{
    QMap<int, QList<QPointF>> scans;
    QMap<int, double> mobilities;
};

Result<Frame> readFrame(msreader::WatchedDataSource* source,
                        long long d1,
                        const CommandContext& context)
{
    ZEL_ASSIGN_OR_RETURN(const bool hasMobility, source->hasMobility());
    const QString path = source->dataSourceInformation().filePath;
    if (!hasMobility) {
        ZEL_RETURN_ERROR(kBadParameterError, path + QStringLiteral(" has no ion mobility"));
    }
    ZEL_ASSIGN_OR_RETURN(const auto frames, source->d1Range());
    if (!frames.contains(d1)) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         path + QStringLiteral(" has no frame %1: they count from %2 to %3")
                                    .arg(d1)
                                    .arg(*frames.minimum())
                                    .arg(*frames.maximum()));
    }
    ZEL_ASSIGN_OR_RETURN(const auto info, source->scanInfo(MsScanId(d1)));
    const auto time =
        math::ClosedMultiInterval<double, 6>(info.retentionTimeMinutes, info.retentionTimeMinutes);
    MsQuery everyScan = MsQuery::createByTime(
        time, math::ClosedMultiInterval<double, 10>::unbounded(), info.msLevel);
    ZEL_ASSIGN_OR_RETURN(const QList<MsScanId> ids, source->scanIds(everyScan.setD2({})));
    Frame frame;
    const msreader::ScanPass pass(
        ids.size(), QStringLiteral("Reading frame %1").arg(d1), context.progress);
    for (const MsScanId& id : ids) {
        if (id.d1 != d1) {
            continue; // another frame of the same time
        }
        const int scan = static_cast<int>(*id.d2);
        ZEL_ASSIGN_OR_RETURN(frame.scans[scan],
                             source->scanData(MsQuery(id, PeakPickingFilter::Profile)));
        ZEL_ASSIGN_OR_RETURN(const auto scanInfo, source->scanInfo(id));
        frame.mobilities[scan] = scanInfo.mobility.value_or(0.0);
    }
    return frame;
}

/// The highest m/z of a frame's peaks; 0 without any.
double highestMz(const Frame& frame)
{
    double highest = 0.0;
    for (const QList<QPointF>& points : frame.scans) {
        highest = std::max(highest, points.isEmpty() ? 0.0 : points.constLast().x());
    }
    return highest;
}

/// The mobilogram over all scans of the frame. A range beyond the highest peak is cut there; one
/// that lies wholly beyond it gives zeros.
Result<QList<QPointF>> mobilogram(const Frame& frame, const Interval<double>& mz)
{
    Error e;
    TurboXicSettings settings;
    settings.maxIonCount = 0;
    for (const QList<QPointF>& points : frame.scans) {
        settings.maxIonCount = std::max(settings.maxIonCount, static_cast<int>(points.size()));
    }
    // The index gives scans up to, not including, an end that it holds: an empty scan after the
    // last makes room.
    QMap<int, QList<QPointF>> scans = frame.scans;
    scans.insert(frame.scans.lastKey() + 1, {});
    const double highest = highestMz(frame);
    if (mz.start > highest) {
        QList<QPointF> zeros;
        for (int scan = frame.scans.firstKey(); scan <= frame.scans.lastKey(); ++scan) {
            zeros.append(QPointF(scan, 0.0));
        }
        return zeros;
    }
    TurboXim index(settings);
    ZEL_RETURN_IF_ERROR(index.init(scans));
    ZEL_ASSIGN_OR_RETURN(QList<QPointF> xim,
                         index.retrieveXim({mz.start, std::min(mz.end, highest)},
                                           {frame.scans.firstKey(), scans.lastKey()}));
    return xim;
}

Error run(const XimOptions& options, const CommandContext& context)
{
    Error e;
    const QString path = QString::fromStdString(options.file);
    const QString outputPath = QString::fromStdString(options.output);
    ZEL_RETURN_IF_ERROR(io::checkFiles({{path}, {outputPath}}));
    ZEL_ASSIGN_OR_RETURN(const auto output, io::OutputFile::openOrStandardOutput(outputPath));
    ZEL_ASSIGN_OR_RETURN(const auto run, openRun(path, options.selection));
    const auto source = watched(run, context);
    ZEL_ASSIGN_OR_RETURN(const Frame frame, readFrame(source.get(), options.frame, context));
    if (frame.scans.isEmpty()) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("%1: frame %2 has no mobility scans")
                             .arg(path, QString::number(options.frame)));
    }
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> xim, mobilogram(frame, parseMzRange(options.mz)));
    if (std::ranges::none_of(xim, [](const QPointF& point) { return point.y() != 0.0; })) {
        tell(QStringLiteral("there is no signal in m/z %1 of frame %2")
                 .arg(QString::fromStdString(options.mz), QString::number(options.frame)));
    }
    *output << "scan\tmobility\tintensity\n";
    for (const QPointF& point : xim) {
        const int scan = static_cast<int>(point.x());
        const auto mobility = frame.mobilities.constFind(scan);
        *output << QByteArray::number(scan) + '\t' +
                       (mobility == frame.mobilities.cend() ? QByteArray()
                                                            : roundTripText(*mobility)) +
                       '\t' + roundTripText(point.y()) + '\n';
    }
    ZEL_RETURN_IF_ERROR(output->commit());
    return e;
}

} // namespace

void addXimCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<XimOptions>();
    CLI::App* const command =
        tool.add_subcommand("xim", "Extract an ion mobilogram from one frame");
    command->add_option("file", options->file, "mzML or mzXML file with ion mobility")
        ->required()
        ->type_name("FILE");
    command
        ->add_option("--frame",
                     options->frame,
                     "Number of the frame: the MS1 frames that are chosen count 1, 2, 3, ...")
        ->required()
        ->check(isWholeNumber(1, std::numeric_limits<int>::max()));
    command->add_option("--mz", options->mz, "Range of m/z A-B")
        ->required()
        ->check(mzRangeValidator())
        ->type_name("A-B");
    command
        ->add_option("-o,--output",
                     options->output,
                     "Table of the mobilogram (TSV); standard output if not given")
        ->type_name("FILE");
    addRunSelection(*command, options->selection);
    command->callback([options, &chosen] {
        chosen = [options](const CommandContext& context) { return run(*options, context); };
    });
}

} // namespace zel::tool
