#include "common/stable/MemoryInfo.h"
#include "feature_finder/FeatureFinderBase.h"
#include "feature_finder/dao/FeatureFinderDaoV2.h"
#include "feature_finder/finders/FeatureFinderFactory.h"
#include "feature_finder/finders/FeatureFinderParametersAutoSet.h"
#include "feature_finder/records/ChargeFeatureList.h"
#include "tools/io/FileCheck.h"
#include "tools/io/OutputFile.h"
#include "tools/io/UnfinishedOutput.h"
#include "tools/zel/cli/Batch.h"
#include "tools/zel/cli/Messages.h"
#include "tools/zel/cli/RunFile.h"
#include "tools/zel/cli/WatchedRun.h"
#include "tools/zel/features/FeatureSettings.h"
#include "tools/zel/features/FeatureTable.h"
#include "tools/zel/features/ProfileWidth.h"

#include <CLI/CLI.hpp>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

namespace zel::tool {

using msreader::MsQuery;

namespace {

constexpr char kStoreSuffix[] = ".ftrs";
constexpr char kTableSuffix[] = ".features.tsv";
constexpr char kJsonSuffix[] = ".features.json";

struct FeaturesOptions
{
    std::vector<std::string> files;
    std::string outputDir;
    msreader::RunSelection selection;
    FeatureSettings settings;
    bool autoSet = false;
    bool tsv = false;
    bool json = false;
};

/// What was found in a run.
struct RunFeatures
{
    SettableFeatureFinderParameters params;
    FeatureFinderCounts counts;
    QList<MasterFeature> masters;
    QList<ChargeFeature> chargeFeatures; ///< of all masters
};

/// The path of a run without the suffix of compression: outputs are named after it.
QString uncompressedPath(const std::string& file)
{
    const QString path = QString::fromStdString(file);
    return path.endsWith(QLatin1String(".gz"), Qt::CaseInsensitive) ? path.chopped(3) : path;
}

QString baseName(const std::string& file)
{
    return QFileInfo(uncompressedPath(file)).completeBaseName();
}

/// The file with this suffix that a run makes.
QString outputPath(const FeaturesOptions& options, const std::string& file, const char* suffix)
{
    return QString::fromStdString(options.outputDir) + QLatin1Char('/') + baseName(file) +
           QLatin1String(suffix);
}

io::CommandFiles filesOf(const FeaturesOptions& options)
{
    io::CommandFiles files;
    for (const std::string& file : options.files) {
        files.inputs.append(QString::fromStdString(file));
        files.outputs.append(outputPath(options, file, kStoreSuffix));
        if (options.tsv) {
            files.outputs.append(outputPath(options, file, kTableSuffix));
        }
        if (options.json) {
            files.outputs.append(outputPath(options, file, kJsonSuffix));
        }
    }
    return files;
}

/// Makes the folder, and refuses runs whose outputs would have one name or cannot be written.
Error prepareOutputs(const FeaturesOptions& options)
{
    Error e;
    QSet<QString> names;
    for (const std::string& file : options.files) {
        const QString name = baseName(file);
        if (names.contains(name)) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("Two runs are called %1; give them apart, with "
                                            "different output folders")
                                 .arg(name));
        }
        names.insert(name);
    }
    const QString folder = QString::fromStdString(options.outputDir);
    if (folder.isEmpty() || !QDir().mkpath(folder)) {
        ZEL_RETURN_ERROR(kFileOpenError,
                         QStringLiteral("Could not make folder \"%1\"").arg(folder));
    }
    ZEL_RETURN_IF_ERROR(io::checkFiles(filesOf(options)));
    return e;
}

/// Refuses settings that a run cannot have, and names those that are of no effect on it.
Error checkSettings(const FeaturesOptions& options,
                    const QString& path,
                    bool hasMobility,
                    const SettableFeatureFinderParameters& params)
{
    if (params.featureFinderVersion == 2 && !hasMobility) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("%1 has no ion mobility, which version 2 asks for").arg(path));
    }
    if (params.featureFinderVersion == 1 && params.d2HashFactor < 1.0) {
        // Columns without a scan between the others would have apexes, but no time.
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("--d2-hash-factor must be at least 1 for version 1, where "
                                        "it counts MS1 scans, but is %1")
                             .arg(params.d2HashFactor));
    }
    if (params.featureFinderVersion == 2 &&
        params.d2HashFactor != std::trunc(params.d2HashFactor)) {
        // The finder turns columns into mobility scans by the whole part of the factor.
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("--d2-hash-factor must be a whole number for version 2, "
                                        "but is %1")
                             .arg(params.d2HashFactor));
    }
    for (const std::string& option : options.settings.givenButUnread(params, options.autoSet)) {
        tell(QString::fromStdString(option) + QStringLiteral(" is not read on ") + path);
    }
    if (options.autoSet && params.featureFinderVersion != 2) {
        tell(QStringLiteral("--auto has no effect on ") + path +
             QStringLiteral(", which is not searched with version 2"));
    }
    return kNoError;
}

/// Lets a mobility run of few frames have what it has, and features as short as that: one infused
/// frame is a run, too.
Error fitToFrames(const QString& path,
                  msreader::MsDataSourceInterface* source,
                  SettableFeatureFinderParameters* params)
{
    ZEL_ASSIGN_OR_RETURN(const auto ids, source->scanIds(msreader::MsQuery::createByMsLevel(1)));
    const auto frameCount = static_cast<int>(ids.size());
    const int framesToSum = std::min(params->numberOfFramesToSum, frameCount);
    if (framesToSum == 0) {
        return kNoError; // all frames are summed, or there is none
    }
    const int windowCount = std::max(frameCount - framesToSum, 1);
    const int longestFeature = windowCount - 1 + framesToSum - 1;
    if (framesToSum == params->numberOfFramesToSum && params->minHillLengthD1 <= longestFeature) {
        return kNoError;
    }
    params->numberOfFramesToSum = framesToSum;
    params->minHillLengthD1 = std::min({params->minHillLengthD1, longestFeature, windowCount});
    tell(path + QStringLiteral(" has only %1 %2, so --number-of-frames-to-sum becomes %3 and "
                               "--min-hill-length-d1 %4")
                    .arg(frameCount)
                    .arg(QLatin1String(frameCount == 1 ? "frame" : "frames"))
                    .arg(framesToSum)
                    .arg(params->minHillLengthD1));
    return kNoError;
}

/// Says so where a run has nothing to give.
void tellEmpty(const QString& path, const RunFeatures& found)
{
    if (found.counts.hills == 0) {
        tell(path + QStringLiteral(": no hills were found, so there are no features"));
    } else if (found.masters.isEmpty()) {
        tell(path +
             QStringLiteral(": the %1 hills make no isotope cluster, so there are no features")
                 .arg(found.counts.hills));
    }
}

Result<RunFeatures> findFeatures(const FeaturesOptions& options,
                                 const QString& path,
                                 msreader::WatchedDataSource* source,
                                 const CommandContext& context)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const bool hasMobility, source->hasMobility());
    std::optional<double> peakWidthMz;
    if (options.settings.fitsKernel()) {
        ZEL_ASSIGN_OR_RETURN(peakWidthMz, profilePeakWidth(source));
    }
    RunFeatures found;
    found.params = options.settings.forRun(hasMobility, peakWidthMz);
    ZEL_RETURN_IF_ERROR(checkSettings(options, path, hasMobility, found.params));
    if (found.params.featureFinderVersion == 2) {
        ZEL_RETURN_IF_ERROR(fitToFrames(path, source, &found.params));
    }
    if (options.autoSet) {
        ZEL_ASSIGN_OR_RETURN(found.params,
                             FeatureFinderParametersAutoSet().run(found.params, source));
        if (found.params.featureFinderVersion == 2) { // the estimate knows nothing of few frames
            ZEL_RETURN_IF_ERROR(fitToFrames(path, source, &found.params));
        }
    }
    ZEL_ASSIGN_OR_RETURN(const auto finder,
                         FeatureFinderFactory::featureFinderFactoryInit(found.params));
    std::optional<msreader::ScanPass> pass;
    if (found.params.featureFinderVersion == 1) {
        // It counts no steps of its own: it reads each MS1 scan once, and then those again in which
        // a hill has its apex.
        ZEL_ASSIGN_OR_RETURN(const auto ids, source->scanIds(MsQuery::createByMsLevel(1)));
        pass.emplace(
            2 * ids.size(), QStringLiteral("Feature finding at ") + path, context.progress);
    }
    ZEL_ASSIGN_OR_RETURN(found.masters, finder->findFeatures(source, context.progress));
    if (isCanceled(context.progress)) {
        ZEL_RETURN_ERROR(kOperationCanceledError);
    }
    ZEL_RETURN_IF_ERROR(source->firstFailure()); // finders leave out what they cannot read
    found.counts = finder->counts();
    for (const MasterFeature& master : std::as_const(found.masters)) {
        found.chargeFeatures.append(master.chargeFeatures());
    }
    return found;
}

Error writeText(const QString& path, const QByteArray& text)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const auto output, io::OutputFile::open(path));
    *output << text;
    ZEL_RETURN_IF_ERROR(output->commit());
    return kNoError;
}

/// The files of one run. The store is written in a folder of its own and then moved into place, as
/// rows are added to it one by one.
class RunOutputs
{
public:
    /// Makes sure that the folder can be written, before any long work.
    static Result<std::unique_ptr<RunOutputs>> open(const FeaturesOptions& options,
                                                    const std::string& file)
    {
        std::unique_ptr<RunOutputs> outputs(new RunOutputs(options, file));
        if (!outputs->m_unfinished.isValid()) {
            ZEL_RETURN_ERROR(kFileOpenError,
                             QStringLiteral("Could not write into folder %1: %2")
                                 .arg(QString::fromStdString(options.outputDir),
                                      outputs->m_unfinished.errorString()));
        }
        for (const char* suffix : {".ftrs-journal", ".ftrs-wal"}) {
            const QString journal = outputs->pathWith(suffix);
            if (QFileInfo::exists(journal)) { // SQLite would play it into the new file, too
                ZEL_RETURN_ERROR(kFileOpenError,
                                 QStringLiteral("%1 is open in another program, or one left it "
                                                "unfinished: %2 is there")
                                     .arg(outputs->pathWith(kStoreSuffix), journal));
            }
        }
        return outputs;
    }

    QString pathWith(const char* suffix) const { return outputPath(m_options, m_file, suffix); }

    Error writeStore(const QList<MasterFeature>& masters) const
    {
        Error e;
        const QString path = pathWith(kStoreSuffix);
        FeatureFinderDaoV2 store;
        e = store.createFtrs(uncompressedPath(m_file), m_unfinished.path(), masters);
        if (e.hasError()) { // the statement that failed is of no use to a user
            const QString reason = e.message().section(QLatin1String(" in the SQL"), 0, 0);
            ZEL_RETURN_ERROR(kFileOpenError,
                             QStringLiteral("Could not write %1: %2").arg(path, reason));
        }
        std::error_code problem; // replaces a file, which QFile::rename does not
        std::filesystem::rename(store.ftrsOutput().toStdString(), path.toStdString(), problem);
        if (problem) {
            ZEL_RETURN_ERROR(kFileOpenError,
                             QStringLiteral("Could not write %1: %2")
                                 .arg(path, QString::fromStdString(problem.message())));
        }
        return kNoError;
    }

private:
    RunOutputs(const FeaturesOptions& options, const std::string& file)
        : m_options(options)
        , m_file(file)
        , m_unfinished(QString::fromStdString(options.outputDir) + QStringLiteral("/.zel-XXXXXX"))
    {
        m_mark.emplace(io::UnfinishedOutput::Kind::Temporary, m_unfinished.path());
    }

    const FeaturesOptions& m_options;
    const std::string& m_file;
    std::optional<io::UnfinishedOutput> m_mark; ///< set as long as the folder may be there
    QTemporaryDir m_unfinished;
};

Error writeTable(const RunFeatures& found,
                 msreader::MsDataSourceInterface* source,
                 const QString& path)
{
    Error e;
    FeatureTableAxes axes;
    if (!found.params.convertD1ToRetentionTime) {
        ZEL_ASSIGN_OR_RETURN(axes.minutesByD1,
                             FeatureFinderBase::buildIndexRetentionTimeMap(source, 1));
    }
    if (found.params.featureFinderVersion == 2) { // the others do not look at it
        ZEL_ASSIGN_OR_RETURN(axes.mobilityByD2, mobilityByD2(source));
    }
    ZEL_RETURN_IF_ERROR(writeText(path, featureTable(found.masters, axes)));
    return kNoError;
}

Error processRun(const FeaturesOptions& options,
                 const std::string& file,
                 const CommandContext& context)
{
    Error e;
    QElapsedTimer timer;
    timer.start();
    ZEL_ASSIGN_OR_RETURN(const auto outputs, RunOutputs::open(options, file));
    const QString path = QString::fromStdString(file);
    ZEL_ASSIGN_OR_RETURN(const auto run, openRunOfOneKind(path, options.selection, 1));
    const auto source = watched(run, context);
    ZEL_ASSIGN_OR_RETURN(const RunFeatures found,
                         findFeatures(options, path, source.get(), context));
    tellEmpty(path, found);
    ZEL_RETURN_IF_ERROR(outputs->writeStore(found.masters));
    if (options.tsv) {
        ZEL_RETURN_IF_ERROR(writeTable(found, source.get(), outputs->pathWith(kTableSuffix)));
    }
    if (options.json) {
        ZEL_RETURN_IF_ERROR(
            writeText(outputs->pathWith(kJsonSuffix),
                      ChargeFeatureList(found.chargeFeatures).serialize().toUtf8()));
    }
    constexpr double bytesPerMb = 1e6;
    std::cout << outputs->pathWith(kStoreSuffix).toStdString() << ": " << found.counts.hills
              << " hills, " << found.counts.clusters << " clusters, " << found.chargeFeatures.size()
              << " charge features, " << found.masters.size() << " masters; "
              << static_cast<double>(timer.elapsed()) / 1000.0 << " s, peak memory "
              << static_cast<double>(MemoryInfo().peakProcessWorkingSet()) / bytesPerMb << " MB\n";
    return kNoError;
}

Error run(const FeaturesOptions& options, const CommandContext& context)
{
    Error e;
    ZEL_RETURN_IF_ERROR(prepareOutputs(options));
    return forEachRun(options.files, context, [&](const std::string& file) {
        return processRun(options, file, context);
    });
}

} // namespace

void addFeaturesCommand(CLI::App& tool, CommandAction& chosen)
{
    auto options = std::make_shared<FeaturesOptions>();
    CLI::App* const command =
        tool.add_subcommand("features", "Find the isotope clusters of all peptides in runs");
    command->add_option("files", options->files, "mzML or mzXML files, plain or gzip-compressed")
        ->required()
        ->type_name("FILE");
    command
        ->add_option("-o,--output",
                     options->outputDir,
                     "Folder for RUN.ftrs (SQLite); made if it is not there")
        ->required()
        ->type_name("FOLDER");
    command->add_flag("--tsv",
                      options->tsv,
                      "Write RUN.features.tsv too: a row for each charge state of a compound");
    command->add_flag("--json", options->json, "Write RUN.features.json too: all charge features");
    command->add_flag("--auto",
                      options->autoSet,
                      "Estimate --d2-kernel-width and --min-hill-length-d1 from the richest frames "
                      "of a run with mobility");
    addRunSelection(*command, options->selection);
    options->settings.addTo(*command);
    command->footer(
        "A hill is a peak along m/z and along retention, or in one frame along mobility. "
        "Hills at the distances of isotopes make a cluster, the clusters of an ion along "
        "retention a charge feature, and charge features of one mass and time a master. "
        "A preset and, where peaks are narrow or wide, --min-hill-length-d1 is what most "
        "runs need; --max-d1-gap and lengths are in MS1 scans, not minutes.");
    command->callback([options, &chosen] {
        chosen = [options](const CommandContext& context) { return run(*options, context); };
    });
}

} // namespace zel::tool
