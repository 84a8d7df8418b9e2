#include "feature_finder/clusters/ScanIteratorV2HillClusteromatic.h"

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/isotopes/MolCalc.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
#include "common/stable/Logging.h"
#include "common/stable/MathUtils.h"
#include "common/stable/PhysicalConstants.h"
#include "feature_finder/clusters/ClusterFrame_p.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <vector>

namespace zel {

namespace {

constexpr const ImmutableFeatureFinderParameters& kFixed = g_immutableFeatureFinderParameters;

int apexColumn(const HillD1& hill)
{
    return hill.d1ApexIndex;
}

int apexColumn(const HillD2& hill)
{
    return hill.d2ApexIndex;
}

template <typename Hill>
HillPoint pointOf(const Hill& hill)
{
    const int row =
        FeatureFinderUtilities::hashMz(hill.mzApex, static_cast<int>(kFixed.clusterMzHashFactor));
    return {row, apexColumn(hill), hill.intensity};
}

template <typename Hill>
Error checkHills(const QList<Hill>& hills)
{
    constexpr int greatestColumn = std::numeric_limits<int>::max() / 16; // half a GB a matrix
    for (const Hill& hill : hills) {
        const HillPoint point = pointOf(hill);
        if (point.row < 0 || point.row >= SpectraSubtractomatic::clusterRows() ||
            point.column < 0 || point.column > greatestColumn || !std::isfinite(hill.intensity)) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("A hill has its apex at an m/z up to %1, a column that "
                                            "is not negative and a finite height, but m/z %2, "
                                            "column %3 and height %4 came")
                                 .arg(kFixed.maxMz)
                                 .arg(hill.mzApex)
                                 .arg(point.column)
                                 .arg(hill.intensity));
        }
    }
    return kNoError;
}

template <typename Group, typename Hill>
Group frameGroupOf(const QList<Hill>& hills)
{
    Group group;
    std::vector<HillPoint> points;
    points.reserve(static_cast<std::size_t>(hills.size()));
    for (qsizetype i = 0; i < hills.size(); ++i) {
        points.push_back(pointOf(hills[i]));
        group.hills.insert(group.hills.cend(), static_cast<int>(i), hills[i]);
    }
    buildHillMatrices(points, &group.frameRaw, &group.hillIndex);
    return group;
}

Error checkHasSignal(const Eigen::SparseMatrix<double>& frameRaw)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::notEqual(
        countPoints(frameRaw), 0, Error(kError, "The hills hold no signal to cluster")));
    return kNoError;
}

double averagineScoreOf(const ChargeFeature& feature)
{
    return feature.averagineScore;
}

double averagineScoreOf(const ChargeFeatureFrame& feature)
{
    return feature.averagine;
}

/// Drops the clusters that the settings do not accept, in three passes that keep the order.
template <typename Feature>
void filter(const SettableFeatureFinderParameters& params, QList<Feature>* features)
{
    features->removeIf([&params](const Feature& feature) {
        const bool showsFewIsotopes = feature.charge < kFixed.lowIsotopeCountChargeLimit &&
                                      feature.monoIsotopicMass < kFixed.lowIsotopeCountMassLimit;
        return feature.isotopeCount < params.minIsotopeCount - (showsFewIsotopes ? 1 : 0);
    });
    features->removeIf([&params](const Feature& feature) {
        return !(averagineScoreOf(feature) >= params.minAveragineScore);
    });
    features->removeIf([&params](const Feature& feature) {
        return !(params.minMonoMass <= feature.monoIsotopicMass &&
                 feature.monoIsotopicMass <= params.maxMonoMass);
    });
}

} // namespace

/// What is known of a cluster beside its hill.
struct ScanIteratorV2HillClusteromatic::Cluster
{
    ClusterFrame::Point point;
    double mz = 0.0; ///< of the point
    int charge = 0;
    int monoOffset = 0;
    double massDa = 0.0;
    double averagineScore = 0.0;
    int isotopeCount = 0;
};

Error ScanIteratorV2HillClusteromatic::init(const SettableFeatureFinderParameters& params)
{
    Error e;
    m_isInit = false;
    m_params = params;
    ZEL_RETURN_IF_ERROR(m_chargeDeterminator.init(params.networkFilePath));
    ZEL_RETURN_IF_ERROR(m_monoisotopeDeterminator.init(params.networkFilePath));
    ZEL_RETURN_IF_ERROR(m_subtractomatic.init(params));
    m_isInit = true;
    return kNoError;
}

Result<QList<ChargeFeatureFrame>> ScanIteratorV2HillClusteromatic::buildChargeFeatures(
    QList<HillD2> hills)
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkInput(hills));
    FrameGroupD2 group = buildClusterRawFrameGroup(hills);
    ZEL_RETURN_IF_ERROR(checkHasSignal(group.frameRaw));
    ZEL_ASSIGN_OR_RETURN(QList<ChargeFeatureFrame> features,
                         extractChargeFeaturesFromFrameRaw(&group));
    filter(m_params, &features);
    return features;
}

Result<QList<ChargeFeature>> ScanIteratorV2HillClusteromatic::buildChargeFeatures(
    QList<HillD1> hills)
{
    Error e;
    QElapsedTimer timer;
    timer.start();
    ZEL_RETURN_IF_ERROR(checkInput(hills));
    FrameGroupD1 group = buildClusterRawFrameGroup(hills);
    qCDebug(algoLog) << "Cluster Frame build in ms:" << timer.elapsed();
    ZEL_RETURN_IF_ERROR(checkHasSignal(group.frameRaw));
    ZEL_ASSIGN_OR_RETURN(QList<ChargeFeature> features, extractChargeFeaturesFromFrameRaw(&group));
    qCDebug(algoLog) << "Frame iterated in ms:" << timer.elapsed();
    filter(m_params, &features);
    qCDebug(algoLog) << "Build Charge Features Completed in" << timer.elapsed() << "ms";
    qCDebug(algoLog) << "Charge Features Count" << features.size();
    return features;
}

template <typename Hill>
Error ScanIteratorV2HillClusteromatic::checkInput(const QList<Hill>& hills) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(
        ErrorUtils::equal(m_isInit, true, Error(kError, "The clustering was not initialized")));
    ZEL_RETURN_IF_ERROR(checkHills(hills));
    return kNoError;
}

ScanIteratorV2HillClusteromatic::FrameGroupD1
ScanIteratorV2HillClusteromatic::buildClusterRawFrameGroup(const QList<HillD1>& hills) const
{
    return frameGroupOf<FrameGroupD1>(hills);
}

ScanIteratorV2HillClusteromatic::FrameGroupD2
ScanIteratorV2HillClusteromatic::buildClusterRawFrameGroup(const QList<HillD2>& hills) const
{
    return frameGroupOf<FrameGroupD2>(hills);
}

Result<QList<ChargeFeature>> ScanIteratorV2HillClusteromatic::extractChargeFeaturesFromFrameRaw(
    FrameGroupD1* group) const
{
    Error e;
    QList<ChargeFeature> features;
    const auto append = [&](const Cluster& cluster) {
        const HillD1 hill =
            group->hills.value(group->hillIndex.coeff(cluster.point.row, cluster.point.column));
        ChargeFeature feature;
        feature.mzApexOfCluster = cluster.mz;
        feature.monoIsotopicMass = cluster.massDa;
        feature.apexIntensity = MathUtils::truncateToInt(hill.intensity);
        feature.averagineScore = cluster.averagineScore;
        feature.startD1 = hill.d1Lo;
        feature.endD1 = hill.d1Hi;
        feature.apexD1 = hill.d1Apex;
        feature.isotopeCount = cluster.isotopeCount;
        feature.charge = cluster.charge;
        feature.monoOffset = cluster.monoOffset;
        features.append(feature);
    };
    ZEL_RETURN_IF_ERROR(extractClusters(&group->frameRaw, m_params.maxD1Gap, append));
    return features;
}

Result<QList<ChargeFeatureFrame>>
ScanIteratorV2HillClusteromatic::extractChargeFeaturesFromFrameRaw(FrameGroupD2* group) const
{
    Error e;
    const QList<HillD2> hills = group->hills.values();
    QList<ChargeFeatureFrame> features;
    const auto append = [&](const Cluster& cluster) {
        const HillD2 hill =
            group->hills.value(group->hillIndex.coeff(cluster.point.row, cluster.point.column));
        ChargeFeatureFrame feature;
        feature.mzApexOfCluster = cluster.mz;
        feature.mzFirstOfCluster = findMzOfFirstHillInIsotopeCluster(
            hills, cluster.mz, cluster.monoOffset, cluster.charge);
        feature.monoIsotopicMass = cluster.massDa;
        feature.intensity = hill.intensity;
        feature.averagine = cluster.averagineScore;
        feature.d1 = hill.d1;
        feature.startD2 = hill.d2Lo;
        feature.endD2 = hill.d2Hi;
        feature.apexD2 = hill.d2Apex;
        feature.isotopeCount = cluster.isotopeCount;
        feature.charge = cluster.charge;
        feature.monoOffset = cluster.monoOffset;
        features.append(feature);
    };
    ZEL_RETURN_IF_ERROR(extractClusters(&group->frameRaw, m_params.maxD2Gap, append));
    return features;
}

Error ScanIteratorV2HillClusteromatic::extractClusters(
    Eigen::SparseMatrix<double, 0, int>* frameRaw,
    int halfWidthColumns,
    const std::function<void(const Cluster&)>& append) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkHasSignal(*frameRaw));
    ClusterFrame frame(frameRaw, halfWidthColumns);
    const int pointCountAtStart = frame.pointCount();
    for (int step = 1; frame.pointCount() > 0 && step < pointCountAtStart; ++step) {
        const std::optional<ClusterFrame::Point> point = frame.strongestPoint();
        if (!point) {
            break;
        }
        Eigen::SparseVector<double> profile;
        ZEL_RETURN_IF_ERROR(frame.profileAt(*point, &profile));
        Cluster cluster;
        cluster.point = *point;
        cluster.charge = profile.nonZeros() < 2 ? 0 : m_chargeDeterminator.determineCharge(profile);
        if (cluster.charge >= 1) {
            DecimatorMatrix decimator;
            ZEL_RETURN_IF_ERROR(
                describe(profile, 2 * frame.halfWidthColumns() + 1, &cluster, &decimator));
            frame.subtract(decimator.model, *point);
            append(cluster);
        }
        frame.remove(*point);
    }
    return kNoError;
}

Error ScanIteratorV2HillClusteromatic::describe(const Eigen::SparseVector<double, 0, int>& profile,
                                                int width,
                                                Cluster* cluster,
                                                DecimatorMatrix* decimator) const
{
    Error e;
    cluster->mz = FeatureFinderUtilities::unHashMz(cluster->point.row, kFixed.clusterMzHashFactor);
    cluster->monoOffset =
        m_monoisotopeDeterminator.determineMonoisotopeOffset(profile, cluster->mz, cluster->charge);
    cluster->massDa = molcalc::calculateUnchargedMassFromMzCharge(
        cluster->mz, cluster->charge, cluster->monoOffset, m_params.unchargedMassFlag);
    ZEL_RETURN_IF_ERROR(m_subtractomatic.buildChargeClusterDecimator(
        profile, cluster->mz, cluster->charge, cluster->monoOffset, width, decimator));
    cluster->averagineScore = decimator->averagineScore;
    cluster->isotopeCount = decimator->isotopeCount;
    return kNoError;
}

double ScanIteratorV2HillClusteromatic::findMzOfFirstHillInIsotopeCluster(
    const QList<HillD2>& hills, double mz, int monoOffset, int charge) const
{
    if (monoOffset == 0 || charge == 0) {
        return mz;
    }
    const int z = std::abs(charge);
    const double target = mz - kCarbonIsotopeSpacingDa / z * monoOffset;
    const double tolerance = z * mz * m_params.ppmTolerance / 1e6;
    const auto first = std::ranges::find_if(
        hills, [&](const HillD2& hill) { return std::abs(hill.mzApex - target) <= tolerance; });
    return first == hills.end() ? target : first->mzApex;
}

} // namespace zel
