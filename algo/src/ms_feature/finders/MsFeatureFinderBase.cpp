#include "ms_feature/finders/MsFeatureFinderBase.h"

#include "MultiIsotopeXic.h"
#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Logging.h"
#include "common/stable/PhysicalConstants.h"
#include "common/stable/PlotStretch_p.h"
#include "common/stable/WideRegisters_p.h"
#include "ms_feature/finders/MsFeatureFinderBase_p.h"
#include "ms_feature/segmentation/MsFeatureFinderStage1.h"

#include <algorithm>
#include <cmath>

namespace zel {

using msreader::MsDataSourceInterface;
using msreader::PeakPickingFilter;

namespace {

using TimeSet = math::ClosedMultiInterval<double, 6>;
using Xics = QList<QList<QPointF>>;

/// The span of the common part of a set and an interval; nothing when they have none.
std::optional<Interval<double>> commonSpan(const TimeSet& set, const Interval<double>& interval)
{
    std::optional<Interval<double>> span;
    for (const Interval<double>& piece : set.intervals()) {
        const double start = std::max(interval.start, piece.start);
        const double end = std::min(interval.end, piece.end);
        if (start <= end) {
            span = Interval<double>{span ? span->start : start, end};
        }
    }
    return span;
}

/// All XICs in one request. A request that fails leaves every XIC empty.
Xics bulkXics(MsDataSourceInterface* reader,
              const QList<XicDimensions>& dimensions,
              const std::optional<PeakPickingFilter>& filter)
{
    constexpr int msLevel = 1;
    Result<Xics> xics =
        filter ? reader->xics(dimensions, msLevel, *filter) : reader->xics(dimensions);
    if (!xics.isOk()) {
        qCDebug(algoLog) << "MsFeatureFinderBase::constructXicWindow no XICs: "
                         << xics.error().errorMessage();
        return Xics(dimensions.size());
    }
    return std::move(xics.value());
}

/// The mean height of a stretch `width` wide. It is held between the lowest and the highest height
/// there, so that a flat stretch stays exactly flat in spite of rounding.
double meanHeight(const PlotWalk& walk, double width)
{
    auto [lowest, highest] = std::minmax({walk.heightAtStart(), walk.heightAtEnd()});
    for (auto point = walk.stretch().first; point != walk.stretch().last; ++point) {
        lowest = std::min(lowest, point->y());
        highest = std::max(highest, point->y());
    }
    return std::clamp(walk.area() / width, lowest, highest);
}

bool isDeamidationDelta(const QString& item)
{
    constexpr double toleranceDa = 0.0001;
    const QStringList parts = item.split(QLatin1Char('/'));
    if (parts.size() != 2 || parts.contains(QLatin1String("deam"), Qt::CaseInsensitive)) {
        return false;
    }
    bool isNumber = false;
    const double delta = parts[1].toDouble(&isNumber);
    return isNumber && std::abs(delta - kDeamidationMassShiftDa) < toleranceDa;
}

} // namespace

bool hasOneDeamidationDelta(const QString& mods)
{
    const QStringList items = mods.split(QLatin1Char(';'));
    return std::count_if(items.cbegin(), items.cend(), isDeamidationDelta) == 1;
}

MsFeatureFinderBase::MsFeatureFinderBase(const MsFeatureFinderSettings& settings)
    : m_settings(settings)
{}

MsFeatureFinderBase::~MsFeatureFinderBase() = default;

QString MsFeatureFinderBase::peptideHash() const
{
    return m_maxScorePSM.peptideHash();
}

Result<QList<std::optional<Ms1Feature>>> MsFeatureFinderBase::constructXicWindow(
    const XicWindowFactory& factory,
    const std::optional<PeakPickingFilter>& filter,
    MsDataSourceInterface* reader,
    PsmsByHash* psmsByHash,
    QSharedPointer<ProgressBarInterface> progress)
{
    if (reader == nullptr || psmsByHash == nullptr) {
        ZEL_RETURN_ERROR(kError, "Finding features needs a data source and matches; one is null");
    }
    QStringList keys = psmsByHash->keys();
    keys.sort(Qt::CaseSensitive);
    ZEL_ASSIGN_OR_RETURN(const Xics xics,
                         cutXics(factory, filter, reader, keys, *psmsByHash, progress));

    QList<std::optional<Ms1Feature>> features;
    features.reserve(keys.size());
    ProgressContext context(static_cast<int>(keys.size()), progress);
    for (qsizetype i = 0; i < keys.size(); ++i) {
        if (context.isCanceled()) {
            ZEL_RETURN_ERROR(kOperationCanceledError);
        }
        features.append(featureOf(keys[i], xics[i], &(*psmsByHash)[keys[i]]));
        if (features.constLast()) {
            ++context;
        }
    }
    return features;
}

Result<Xics> MsFeatureFinderBase::cutXics(const XicWindowFactory& factory,
                                          const std::optional<PeakPickingFilter>& filter,
                                          MsDataSourceInterface* reader,
                                          const QStringList& keys,
                                          const PsmsByHash& psmsByHash,
                                          const QSharedPointer<ProgressBarInterface>& progress)
{
    ZEL_ASSIGN_OR_RETURN(const TimeSet runTimes, reader->retentionTimeRange());
    const bool foldsIsotopes = m_settings.multiIsotopeMethod ==
                               MsFeatureFinderSettings::MultiIsotopeMethod::WeightedHarmonicMean;
    QList<XicDimensions> dimensions;
    Xics xics;
    for (const QString& key : keys) {
        if (isCanceled(progress)) {
            ZEL_RETURN_ERROR(kOperationCanceledError);
        }
        const QList<PeptideSpectrumMatch> psms = psmsByHash.value(key);
        setReferencePsms(psms);
        const std::optional<XicWindow> window =
            psms.isEmpty() ? std::nullopt : xicWindow(factory, runTimes);
        dimensions.append(window ? window->toXicDimensions() : XicDimensions({}, {}));
        if (foldsIsotopes) {
            xics.append(window ? multiIsotopeXic(
                                     *window, factory, reader, psms.constFirst().tarnicStyleMods())
                               : QList<QPointF>());
        }
    }
    if (!foldsIsotopes) {
        xics = bulkXics(reader, dimensions, filter);
    }
    if (xics.size() != keys.size()) {
        ZEL_RETURN_ERROR(
            kError,
            QStringLiteral("%1 XICs were asked for, %2 came").arg(keys.size()).arg(xics.size()));
    }
    return xics;
}

void MsFeatureFinderBase::setReferencePsms(const QList<PeptideSpectrumMatch>& psms)
{
    if (psms.isEmpty()) {
        return;
    }
    using Psm = PeptideSpectrumMatch;
    m_firstPSM = *std::min_element(psms.cbegin(), psms.cend(), Psm::cmpScanTime);
    m_lastPSM = *std::max_element(psms.cbegin(), psms.cend(), Psm::cmpScanTime);
    m_maxScorePSM = *std::max_element(psms.cbegin(), psms.cend(), Psm::cmpScore);
}

std::optional<XicWindow> MsFeatureFinderBase::xicWindow(const XicWindowFactory& factory,
                                                        const TimeSet& runTimes) const
{
    const double margin = m_settings.xicTimeWindowToExtract();
    const std::optional<Interval<double>> times = commonSpan(
        runTimes, {m_firstPSM.scanTimeMinutes() - margin, m_lastPSM.scanTimeMinutes() + margin});
    if (!times) {
        return std::nullopt;
    }
    return factory.create(m_maxScorePSM.calcMr(),
                          m_maxScorePSM.charge(),
                          m_settings.xicMzTolerancePpm,
                          times->start,
                          times->end,
                          m_settings.isotopeSelector.isotopeToUse(m_maxScorePSM.wtCalcMr()));
}

QList<QPointF> MsFeatureFinderBase::multiIsotopeXic(const XicWindow& window,
                                                    const XicWindowFactory& factory,
                                                    MsDataSourceInterface* reader,
                                                    const QString& mods) const
{
    constexpr int firstIsotope = 0;
    constexpr double cumulativeIntensityLimit = 0.95;
    MultiIsotopeXic folder;
    folder.setWhmParams({m_settings.whmMinDenominatorConstant,
                         m_settings.whmUseBpiForMinDenominator,
                         m_settings.whmMovingAverageSamplingCount,
                         {}});
    const Result<QList<QPointF>> xic = folder.xic(m_maxScorePSM.calcMr(),
                                                  m_maxScorePSM.charge(),
                                                  factory,
                                                  m_settings.xicMzTolerancePpm,
                                                  window.timeStart,
                                                  window.timeEnd,
                                                  firstIsotope,
                                                  cumulativeIntensityLimit,
                                                  reader,
                                                  MultiIsotopeXic::XicAggregationWhm,
                                                  hasOneDeamidationDelta(mods));
    return xic.isOk() ? xic.value() : QList<QPointF>();
}

std::optional<Ms1Feature> MsFeatureFinderBase::featureOf(const QString& key,
                                                         const QList<QPointF>& points,
                                                         QList<PeptideSpectrumMatch>* psms)
{
    if (points.isEmpty() || psms->isEmpty()) {
        return std::nullopt;
    }
    releaseWideRegisters(); // the caller has just looked up a hash
    PlotBase plot;
    plot.setPointList(points, nullptr);
    setReferencePsms(*psms);
    for (PeptideSpectrumMatch& psm : *psms) {
        assignApex(plot, &psm);
    }
    Result<std::optional<Ms1Feature>> found = findFeature(*psms, plot);
    if (!found.isOk() || !found.value()) {
        return std::nullopt;
    }
    Ms1Feature& feature = *found.value();
    feature.setPeptideSpectrumMatches(*psms);
    feature.setXicPlot(plot);
    feature.setHash(key);
    QList<ApexInterval> intervals = feature.timeIntervalList();
    for (ApexInterval& interval : intervals) {
        double auc = 0.0;
        const Error e = MsFeatureFinderStage1::getAreaUnderCurve(
            plot, interval.interval().start, interval.interval().end, &auc);
        interval.setAuc(e.hasError() ? 0.0 : auc);
    }
    feature.setTimeIntervalList(intervals);
    return std::move(found.value());
}

void MsFeatureFinderBase::assignApex(const PlotBase& plot, PeptideSpectrumMatch* psm) const
{
    const double time = psm->scanTimeMinutes();
    psm->setApex(plot.getMaxTimeIntensity(time - m_settings.xicApexSearchWindow,
                                          time + m_settings.xicApexSearchWindow));
}

Error MsFeatureFinderBase::resamplePlot(
    const PlotBase& plot, QList<QPointF>* out, int sampleCount, double start, double end)
{
    const QList<QPointF>& points = plot.getPointList();
    if (points.isEmpty()) {
        ZEL_RETURN_ERROR(kBadParameterError, "A plot without points cannot be resampled");
    }
    const bool takesAll = start < 0.0 || end < 0.0;
    const double first = takesAll ? points.constFirst().x() : start;
    const double last = takesAll ? points.constLast().x() : end;
    const double step = (last - first) / sampleCount;
    if (!(step > 0.0)) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("%1 samples from %2 to %3 have no width")
                             .arg(sampleCount)
                             .arg(first)
                             .arg(last));
    }
    out->clear();
    out->reserve(sampleCount);
    PlotWalk walk(points);
    for (int i = 0; i < sampleCount; ++i) {
        const double x = (i + 0.5) * step + first;
        walk.goTo(x - step / 2, x + step / 2);
        out->append(QPointF(x, meanHeight(walk, step)));
    }
    return kNoError;
}

Result<std::optional<Ms1Feature>> MsFeatureFinderBase::singlePeak(const PlotBase& xic,
                                                                  const Interval<double>& interval,
                                                                  const QPointF& apex)
{
    Error e;
    double left = 0.0;
    double right = 0.0;
    ZEL_RETURN_IF_ERROR(MsFeatureFinderStage1::findHalfMaxRange(
        xic, apex, interval.start, interval.end, &left, &right));
    Ms1Feature feature;
    feature.setTimeInterval(ApexInterval(interval, std::abs(right - left), apex, 0.0, 0.0));
    return std::optional<Ms1Feature>(feature);
}

} // namespace zel
