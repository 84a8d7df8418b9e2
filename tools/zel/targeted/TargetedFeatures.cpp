#include "tools/zel/targeted/TargetedFeatures.h"

#include "common/stable/NumberText.h"
#include "ms_feature/alignment/Ms1FeatureAlign.h"
#include "ms_feature/diagrams/GraphyCollection.h"
#include "ms_feature/finders/MsFeatureFinderSegV2.h"
#include "ms_feature/segmentation/MsFeatureFinderStage1.h"
#include "tools/io/TsvTable.h"

#include <QByteArrayList>

#include <algorithm>
#include <functional>

namespace zel::tool {

using PsmsByHash = MsFeatureFinderBase::PsmsByHash;

namespace {

/// The hashes of the ions that have a feature in any run, each once, ascending.
QStringList allHashes(const QList<FeaturesByHash>& featuresOfRuns)
{
    QStringList hashes;
    for (const FeaturesByHash& features : featuresOfRuns) {
        hashes += features.keys();
    }
    hashes.sort(Qt::CaseSensitive);
    hashes.removeDuplicates();
    return hashes;
}

/// Takes the ions of these hashes out of the map.
PsmsByHash takeOut(const QSet<QString>& hashes, PsmsByHash* psms)
{
    PsmsByHash taken;
    for (auto ion = psms->cbegin(); ion != psms->cend(); ++ion) {
        if (hashes.contains(ion.key())) {
            taken.insert(ion.key(), ion.value());
        }
    }
    psms->removeIf([&hashes](const auto& ion) { return hashes.contains(ion.key()); });
    return taken;
}

/// The features of the run's ions. \param drawingFinder  for the ions to draw; may be null
Result<FeaturesByHash> featuresOfRun(const TargetedRun& run,
                                     const QSet<QString>& drawnHashes,
                                     MsFeatureFinderBase* finder,
                                     MsFeatureFinderBase* drawingFinder,
                                     RunSearch* search)
{
    Error e;
    PsmsByHash psms = run.psms;
    if (drawingFinder != nullptr) {
        ZEL_RETURN_IF_ERROR(search->findInOneGo(drawingFinder, takeOut(drawnHashes, &psms)));
    }
    if (!psms.isEmpty()) {
        ZEL_RETURN_IF_ERROR(search->find(finder, psms));
    }
    return search->features();
}

/// The features that an ion has in the runs.
QList<Ms1Feature*> featuresOf(const QString& hash, QList<FeaturesByHash>* featuresOfRuns)
{
    QList<Ms1Feature*> features;
    for (FeaturesByHash& ofRun : *featuresOfRuns) {
        const auto feature = ofRun.find(hash);
        if (feature != ofRun.end()) {
            features.append(&*feature);
        }
    }
    return features;
}

/// Whether the alignment changes features of this kind.
bool isToAlign(const Ms1FeatureAlignSettings& settings, const QList<Ms1Feature*>& features)
{
    const auto intervalCount = [](const Ms1Feature* feature) {
        return feature->timeIntervalList().size();
    };
    return features.size() >= 2 &&
           (settings.mode == Ms1FeatureAlignSettings::Mode::Full ||
            std::ranges::adjacent_find(features, std::not_equal_to<>(), intervalCount) !=
                features.end());
}

/// Gives the intervals that come from the sum of all runs the area and the width that they have in
/// this one.
void measureIntervals(Ms1Feature* feature)
{
    const PlotBase& plot = feature->xicPlot();
    QList<ApexInterval> intervals = feature->timeIntervalList();
    for (ApexInterval& interval : intervals) {
        const Interval<double> times = interval.interval();
        double area = 0.0;
        double left = 0.0;
        double right = 0.0;
        Error e = MsFeatureFinderStage1::getAreaUnderCurve(plot, times.start, times.end, &area);
        interval.setAuc(e.hasError() ? 0.0 : area);
        e = MsFeatureFinderStage1::findHalfMaxRange(
            plot, interval.apex(), times.start, times.end, &left, &right);
        interval.setFwhm(e.hasError() ? 0.0 : std::max(right - left, 0.0));
    }
    feature->setTimeIntervalList(intervals);
}

/// How many of the matches lie nearer to each interval than to the others, the first of equal ones.
QList<int> psmCounts(const QList<PeptideSpectrumMatch>& psms, const QList<ApexInterval>& intervals)
{
    QList<int> counts(intervals.size(), 0);
    for (const PeptideSpectrumMatch& psm : psms) {
        const double time = psm.scanTimeMinutes();
        const auto nearest = std::ranges::min_element(intervals, {}, [time](const auto& interval) {
            const Interval<double>& times = interval.interval();
            return std::max({times.start - time, time - times.end, 0.0});
        });
        if (nearest != intervals.end()) {
            ++counts[nearest - intervals.begin()];
        }
    }
    return counts;
}

/// The rows of one ion in one run.
QByteArray featureRows(const QString& runName, const Ms1Feature& feature)
{
    const QList<PeptideSpectrumMatch> psms = feature.peptideSpectrumMatches();
    const QList<ApexInterval> intervals = feature.timeIntervalList();
    const QList<int> counts = psmCounts(psms, intervals);
    // All matches of an ion agree in what they say of it.
    const PeptideSpectrumMatch ion = psms.isEmpty() ? PeptideSpectrumMatch() : psms.constFirst();
    QByteArray rows;
    for (qsizetype i = 0; i < intervals.size(); ++i) {
        const ApexInterval& interval = intervals[i];
        rows += QByteArrayList({io::tsvCell(runName.toUtf8()),
                                io::tsvCell(ion.sequence().toUtf8()),
                                io::tsvCell(ion.tarnicStyleMods().toUtf8()),
                                QByteArray::number(ion.charge()),
                                roundTripText(ion.calcMz()),
                                roundTripText(interval.interval().start),
                                roundTripText(interval.apex().x()),
                                roundTripText(interval.interval().end),
                                roundTripText(interval.fwhm()),
                                roundTripText(interval.auc()),
                                roundTripText(interval.apex().y()),
                                QByteArray::number(counts[i]),
                                roundTripText(feature.warpOffset())})
                    .join('\t') +
                '\n';
    }
    return rows;
}

} // namespace

TargetedFinderFactory::TargetedFinderFactory(const TargetedOptions& options)
    : m_makesSecondEdition(options.mode == "adaptive-v2")
    , m_kernelFilterWidth(options.kernelFilterWidth)
    , m_mergesBeforeScoring(options.mergeBeforeScoring)
{}

TargetedFinderFactory::~TargetedFinderFactory() = default;

MsFeatureFinderBase* TargetedFinderFactory::create(const MsFeatureFinderSettings& settings)
{
    return m_makesSecondEdition
               ? new MsFeatureFinderSegV2(settings, m_kernelFilterWidth, m_mergesBeforeScoring)
               : MsFeatureFinderFactory::create(settings);
}

Result<QList<FeaturesByHash>> findFeatures(const TargetedOptions& options,
                                           const Drawing& drawing,
                                           const QList<TargetedRun>& runs,
                                           const CommandContext& context,
                                           Batch* batch)
{
    // A finder draws all that it finds, and writes its page when it goes: one for the ions to draw
    // in all runs, another one for the rest.
    MsFeatureFinderSettings settings = finderSettings(options);
    TargetedFinderFactory factory(options);
    const std::unique_ptr<MsFeatureFinderBase> finder(factory.create(settings));
    settings.adaptiveHtmlDumpFilename = drawing.finderPath;
    GraphyCollection::instance().setJoinsLines(true); // pages of many ions stay small
    const std::unique_ptr<MsFeatureFinderBase> drawingFinder(
        drawing.finderPath.isEmpty() ? nullptr : factory.create(settings));

    QList<FeaturesByHash> featuresOfRuns;
    for (const TargetedRun& run : runs) {
        RunSearch search(options, run, context.progress);
        const Result<FeaturesByHash> features =
            featuresOfRun(run, drawing.hashes, finder.get(), drawingFinder.get(), &search);
        if (isCanceled(context.progress)) {
            ZEL_RETURN_ERROR(kOperationCanceledError);
        }
        if (!features.isOk()) {
            batch->addFailure(run.path, features.error());
        }
        featuresOfRuns.append(features.isOk() ? features.value() : FeaturesByHash());
    }
    return featuresOfRuns;
}

Result<AlignmentCounts> alignFeatures(const TargetedOptions& options,
                                      const Drawing& drawing,
                                      QList<FeaturesByHash>* featuresOfRuns,
                                      const QSharedPointer<ProgressBarInterface>& progress)
{
    AlignmentCounts counts;
    Ms1FeatureAlignSettings settings = alignmentSettings(options);
    if (featuresOfRuns->size() < 2 || settings.mode == Ms1FeatureAlignSettings::Mode::Disabled) {
        return counts;
    }
    Ms1FeatureAlign alignment(settings);
    alignment.setMsFeatureFinderFactory(new TargetedFinderFactory(options));
    settings.htmlDumpFilename = drawing.alignmentPath;
    Ms1FeatureAlign drawingAlignment(settings);
    drawingAlignment.setMsFeatureFinderFactory(new TargetedFinderFactory(options));

    const QStringList hashes = allHashes(*featuresOfRuns);
    ProgressContext context(static_cast<int>(hashes.size()), progress);
    context.setText(QStringLiteral("Aligning"));
    for (const QString& hash : hashes) {
        if (context.isCanceled()) {
            ZEL_RETURN_ERROR(kOperationCanceledError);
        }
        QList<Ms1Feature*> features = featuresOf(hash, featuresOfRuns);
        if (isToAlign(settings, features)) {
            const bool isDrawn = drawing.hashes.contains(hash);
            const Error e = (isDrawn ? drawingAlignment : alignment).align(&features);
            ++(e.hasError() ? counts.failed : counts.aligned);
            if (!e.hasError()) {
                std::ranges::for_each(features, measureIntervals);
            }
        }
        ++context;
    }
    return counts;
}

int intervalsWithoutApex(const QList<FeaturesByHash>& featuresOfRuns)
{
    qsizetype count = 0;
    for (const FeaturesByHash& features : featuresOfRuns) {
        for (const Ms1Feature& feature : features) {
            const QList<ApexInterval> intervals = feature.timeIntervalList();
            count += std::ranges::count_if(
                intervals, [](const auto& interval) { return !(interval.apex().y() > 0.0); });
        }
    }
    return static_cast<int>(count);
}

QByteArray featureTable(const QList<TargetedRun>& runs, const QList<FeaturesByHash>& features)
{
    QByteArray table = "run\tsequence\tmodifications\tcharge\tmz\trt_start\trt_apex\trt_end\tfwhm\t"
                       "area\tintensity\tn_psms\twarp_offset\n";
    for (const QString& hash : allHashes(features)) {
        for (qsizetype i = 0; i < features.size(); ++i) {
            const auto feature = features[i].constFind(hash);
            if (feature != features[i].cend()) {
                table += featureRows(runs[i].name, *feature);
            }
        }
    }
    return table;
}

} // namespace zel::tool
