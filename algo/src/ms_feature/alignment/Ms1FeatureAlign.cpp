#include "ms_feature/alignment/Ms1FeatureAlign.h"

#include "common/stable/MathUtils.h"
#include "ms_feature/alignment/MSLocalAlign.h"
#include "ms_feature/alignment/ShiftedCurves_p.h"
#include "ms_feature/diagrams/FeatureDiagrams_p.h"
#include "ms_feature/diagrams/GraphyCollection.h"
#include "ms_feature/finders/MsFeatureFinderBase.h"
#include "ms_feature/finders/MsFeatureFinderFactory.h"

#include <QFile>

#include <algorithm>
#include <cmath>

namespace zel {

namespace {

using Features = QList<Ms1Feature*>;

bool haveOneTopology(const Features& features)
{
    const qsizetype count = features.constFirst()->timeIntervalList().size();
    return std::all_of(features.cbegin(), features.cend(), [count](const Ms1Feature* feature) {
        return feature->timeIntervalList().size() == count;
    });
}

/// The smallest distance of neighbouring points, at most `greatest`.
double smallestStep(const QList<QPointF>& points, double greatest)
{
    for (qsizetype i = 1; i < points.size(); ++i) {
        const double step = points[i].x() - points[i - 1].x();
        if (step > 0.0) {
            greatest = std::min(greatest, step);
        }
    }
    return greatest;
}

/// The grid on the shared axis from the earliest to the latest point of all XICs.
Result<diagrams::SharedGrid> gridOf(const Features& features)
{
    constexpr double greatestStep = 1.0; // minutes
    std::optional<diagrams::SharedGrid> grid;
    for (const Ms1Feature* feature : features) {
        const QList<QPointF>& points = feature->xicPlot().getPointList();
        if (!points.isEmpty()) {
            const double first = points.constFirst().x() + feature->warpOffset();
            const double last = points.constLast().x() + feature->warpOffset();
            grid = {grid ? std::min(grid->start, first) : first,
                    grid ? std::max(grid->end, last) : last,
                    smallestStep(points, grid ? grid->step : greatestStep)};
        }
    }
    if (!grid) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("None of %1 features has an XIC to align").arg(features.size()));
    }
    return *grid;
}

/// The lowest correlation of a shifted curve with that of the most intense feature.
Error calculateMinimumCorrelation(const Features& features,
                                  const QList<QList<double>>& plots,
                                  const QList<int>& shifts,
                                  double* correlation)
{
    *correlation = 0.0;
    if (features.size() < 2) {
        *correlation = 1.0;
        return kNoError;
    }
    std::vector<double> heights;
    std::transform(features.cbegin(),
                   features.cend(),
                   std::back_inserter(heights),
                   [](const Ms1Feature* feature) { return feature->timeInterval().apex().y(); });
    const qsizetype reference =
        std::max_element(heights.cbegin(), heights.cend()) - heights.cbegin();
    if (reference >= plots.size()) {
        ZEL_RETURN_ERROR(
            kError,
            QStringLiteral("Feature %1 has none of %2 curves").arg(reference).arg(plots.size()));
    }
    std::optional<double> lowest;
    for (qsizetype i = 0; i < plots.size(); ++i) {
        if (i != reference) {
            const double c =
                shifted::correlation(plots[reference], shifts[reference], plots[i], shifts[i]);
            // A curve that is no number must not pass for one that correlates.
            lowest = lowest && !(c < *lowest) && !std::isnan(c) ? *lowest : c;
        }
    }
    *correlation = lowest.value_or(0.0);
    return kNoError;
}

/// Hands the intervals of the sum to each feature, on its own time.
void applyAlignment(const Ms1Feature& summedFeature,
                    const QList<int>& shifts,
                    double step,
                    const Features& features)
{
    for (qsizetype i = 0; i < std::min(features.size(), shifts.size()); ++i) {
        Ms1Feature& feature = *features[i];
        feature.setWarpOffset(feature.warpOffset() + shifts[i] * step);
        QList<ApexInterval> intervals = summedFeature.timeIntervalList();
        for (ApexInterval& part : intervals) {
            part.translate(-feature.warpOffset());
            part.setApex(
                feature.xicPlot().getMaxTimeIntensity(part.interval().start, part.interval().end));
        }
        feature.setTimeIntervalList(intervals);
    }
}

/// The matches of all features, moved to the axis of the shifted curves.
QList<PeptideSpectrumMatch> shiftedMatches(const Features& features,
                                           const QList<int>& shifts,
                                           double step)
{
    QList<PeptideSpectrumMatch> matches;
    for (qsizetype i = 0; i < std::min(features.size(), shifts.size()); ++i) {
        const double offset = features[i]->warpOffset();
        const double shift = shifts[i] * step;
        for (PeptideSpectrumMatch match : features[i]->peptideSpectrumMatches()) {
            match.setScanTimeMinutes(offset + match.scanTimeMinutes() + shift);
            match.setApex({offset + match.apex().x() + shift, match.apex().y()});
            matches.append(match);
        }
    }
    return matches;
}

} // namespace

Ms1FeatureAlign::Ms1FeatureAlign(const Ms1FeatureAlignSettings& settings)
    : m_settings(settings)
    , m_factory(std::make_unique<MsFeatureFinderFactory>())
{
    if (!m_settings.htmlDumpFilename.isEmpty()) {
        GraphyCollection::instance().clear();
    }
}

Ms1FeatureAlign::~Ms1FeatureAlign()
{
    constexpr int diagramsPerAlignment = 3;
    const QString& path = m_settings.htmlDumpFilename;
    if (!path.isEmpty()) {
        GraphyCollection::instance().flush(QFile::encodeName(path).constData(),
                                           diagramsPerAlignment);
    }
}

void Ms1FeatureAlign::setMsFeatureFinderFactory(MsFeatureFinderFactory* factory)
{
    if (factory != m_factory.get()) {
        m_factory.reset(factory);
    }
}

Error Ms1FeatureAlign::align(QList<Ms1Feature*>* features)
{
    using Mode = Ms1FeatureAlignSettings::Mode;
    Error e;
    if (features->contains(nullptr)) {
        ZEL_RETURN_ERROR(kBadParameterError, "One of the features to align is null");
    }
    if (m_settings.mode == Mode::Disabled || features->size() < 2 ||
        (m_settings.mode == Mode::DifferentTopologyOnly && haveOneTopology(*features))) {
        return e;
    }
    QList<QList<double>> plots;
    diagrams::SharedGrid grid;
    ZEL_RETURN_IF_ERROR(uniformResample(*features, &plots, &grid.start, &grid.end, &grid.step));
    QList<int> shifts;
    ZEL_RETURN_IF_ERROR(localAlign(plots, *features, grid.start, grid.step, &shifts));
    double correlation = 0.0;
    ZEL_RETURN_IF_ERROR(calculateMinimumCorrelation(*features, plots, shifts, &correlation));
    if (!(correlation >= m_settings.correlationThreshold)) {
        ZEL_RETURN_ERROR(kError,
                         QStringLiteral("The aligned XICs correlate by %1, less than %2")
                             .arg(correlation)
                             .arg(m_settings.correlationThreshold));
    }
    QList<double> summed;
    ZEL_RETURN_IF_ERROR(shifted::sum(plots, shifts, &summed));
    ZEL_ASSIGN_OR_RETURN(const auto finder, newFinder());
    ZEL_ASSIGN_OR_RETURN(
        const std::optional<Ms1Feature> summedFeature,
        findFeaturesOnSummedPlot(summed, grid.start, grid.step, finder.get(), shifts, *features));
    if (!summedFeature) {
        ZEL_RETURN_ERROR(kError, "Can't align non-existent feature.");
    }
    applyAlignment(*summedFeature, shifts, grid.step, *features);
    if (!m_settings.htmlDumpFilename.isEmpty()) {
        diagrams::appendShiftedCurves(plots, shifts, *features, grid, correlation);
        diagrams::appendSummedCurve(summed, *features, grid, *summedFeature);
        diagrams::appendFeatures(*features);
    }
    return e;
}

Result<std::unique_ptr<MsFeatureFinderBase>> Ms1FeatureAlign::newFinder() const
{
    std::unique_ptr<MsFeatureFinderBase> finder(
        m_factory ? m_factory->create(m_settings.featureFinderSettings) : nullptr);
    if (!finder) {
        ZEL_RETURN_ERROR(kError, "Empty feature finder object.");
    }
    return finder;
}

Error Ms1FeatureAlign::localAlign(const QList<QList<double>>& plots,
                                  const QList<Ms1Feature*>& features,
                                  double /*start*/,
                                  double step,
                                  QList<int>* shifts)
{
    constexpr double widthsToSearch = 8.0;
    Error e;
    shifts->clear();
    if (plots.size() != features.size()) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("%1 curves came with %2 features")
                             .arg(plots.size())
                             .arg(features.size()));
    }
    shifts->resize(features.size());
    if (plots.size() < 2) {
        return e;
    }
    if (!(step > 0.0)) {
        ZEL_RETURN_ERROR(kError, QStringLiteral("A grid cannot have the step %1").arg(step));
    }
    std::vector<double> apexTimes;
    QList<MSLocalAlignData> data;
    double greatestWidth = 0.0;
    for (qsizetype i = 0; i < features.size(); ++i) {
        const Ms1Feature& feature = *features[i];
        const ApexInterval hull = feature.timeInterval();
        apexTimes.push_back(hull.apex().x() + feature.warpOffset());
        greatestWidth = std::max(greatestWidth, hull.fwhm());
        data.emplace_back().setXicPlot(plots[i]);
    }
    const int maxShift =
        MathUtils::truncateToInt(widthsToSearch * greatestWidth * (1.0 / step) + 0.5);
    ZEL_RETURN_IF_ERROR(MSLocalAlign::align(
        data, shifted::middleOne(apexTimes), maxShift, shifts, m_settings.power));
    return e;
}

Error Ms1FeatureAlign::uniformResample(const QList<Ms1Feature*>& features,
                                       QList<QList<double>>* plots,
                                       double* start,
                                       double* end,
                                       double* step)
{
    constexpr double maxCount = 1e7; // of all curves together; keeps odd times harmless
    plots->clear();
    ZEL_ASSIGN_OR_RETURN(const diagrams::SharedGrid grid, gridOf(features));
    *start = grid.start;
    *end = grid.end;
    *step = grid.step;
    const double count = std::trunc((*end - *start) / *step + 0.5);
    if (!(count * static_cast<double>(features.size()) <= maxCount)) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("%1 XICs from %2 to %3 min are too long for steps of %4")
                             .arg(features.size())
                             .arg(*start)
                             .arg(*end)
                             .arg(*step));
    }
    for (const Ms1Feature* feature : features) {
        QList<double> plot;
        plot.reserve(static_cast<qsizetype>(count));
        for (qsizetype k = 0; k < static_cast<qsizetype>(count); ++k) {
            const double time = static_cast<double>(k) * *step + *start - feature->warpOffset();
            plot.append(feature->xicPlot().evaluate(time, 1, 0));
        }
        plots->append(plot);
    }
    return kNoError;
}

Result<std::optional<Ms1Feature>> Ms1FeatureAlign::findFeaturesOnSummedPlot(
    const QList<double>& summed,
    double start,
    double step,
    MsFeatureFinderBase* finder,
    const QList<int>& shifts,
    const QList<Ms1Feature*>& features)
{
    const QList<PeptideSpectrumMatch> matches = shiftedMatches(features, shifts, step);
    QList<QPointF> points;
    points.reserve(summed.size());
    double x = start;
    for (const double height : summed) {
        points.append(QPointF(x, height));
        x += step;
    }
    // The other finders centre on the reference matches, which are set by a whole run alone.
    if (finder->settings().mode != MsFeatureFinderSettings::Mode::Adaptive) {
        if (matches.isEmpty()) {
            ZEL_RETURN_ERROR(kError, "There is no match to centre on");
        }
        finder->setReferencePsms(matches);
    }
    ZEL_ASSIGN_OR_RETURN(std::optional<Ms1Feature> found,
                         finder->findFeature(matches, PlotBase(points)));
    return found;
}

} // namespace zel
