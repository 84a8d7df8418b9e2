#include "bench/networks/SceneReport.h"

#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
#include "feature_finder/clusters/ScanIteratorV2HillClusteromatic.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>

namespace zel::bench {

using training::HillScene;
using training::SceneHill;
using training::SceneKind;

namespace {

HillD1 toHill(const SceneHill& hill, HillD1)
{
    HillD1 out;
    out.mzLo = out.mzHi = out.mzApex = hill.mz;
    out.d1Lo = out.d1Hi = out.d1Apex = hill.column;
    out.d1ApexIndex = out.d1LoIndex = out.d1HiIndex = hill.column;
    out.intensity = out.area = hill.intensity;
    return out;
}

HillD2 toHill(const SceneHill& hill, HillD2)
{
    HillD2 out;
    out.mzLo = out.mzHi = out.mzApex = hill.mz;
    out.d2Lo = out.d2Hi = out.d2Apex = hill.column;
    out.d2ApexIndex = out.d2LoIndex = out.d2HiIndex = hill.column;
    out.intensity = out.area = hill.intensity;
    return out;
}

int apexColumn(const ChargeFeature& feature)
{
    return static_cast<int>(feature.apexD1);
}

int apexColumn(const ChargeFeatureFrame& feature)
{
    return feature.apexD2;
}

std::set<int> findableClusters(const HillScene& scene,
                               const SettableFeatureFinderParameters& params)
{
    std::map<int, std::set<int>> isotopes;
    std::set<int> strong;
    for (const SceneHill& hill : scene.hills) {
        if (hill.cluster >= 0) {
            isotopes[hill.cluster].insert(hill.isotope);
            if (hill.intensity >= 10.0 * scene.noiseLevel) {
                strong.insert(hill.cluster);
            }
        }
    }
    std::set<int> findable;
    for (const int cluster : strong) {
        const double massDa = scene.clusters[static_cast<std::size_t>(cluster)].massDa;
        if (isotopes[cluster].size() >= 3 && massDa >= params.minMonoMass &&
            massDa <= params.maxMonoMass) {
            findable.insert(cluster);
        }
    }
    return findable;
}

/// Charge right, and mass within a fifth of an isotope step.
template <typename Feature>
bool isExact(const Feature& feature, const training::SceneCluster& truth)
{
    return feature.charge == truth.charge &&
           std::abs(feature.monoIsotopicMass - truth.massDa) < 0.2;
}

} // namespace

void SceneReport::add(const HillScene& scene)
{
    if (scene.kind == SceneKind::Run) {
        addHills<HillD1>(scene);
    } else {
        addHills<HillD2>(scene);
    }
}

template <typename Hill>
void SceneReport::addHills(const HillScene& scene)
{
    const SettableFeatureFinderParameters params =
        scene.kind == SceneKind::Frame ? SettableFeatureFinderParameters::trappedMobility()
                                       : SettableFeatureFinderParameters();
    QList<Hill> hills;
    for (const SceneHill& hill : scene.hills) {
        hills.append(toHill(hill, Hill()));
    }
    ScanIteratorV2HillClusteromatic clusteromatic;
    Error e = clusteromatic.init(params);
    const auto features = clusteromatic.buildChargeFeatures(hills);
    if (e.hasError() || !features.isOk()) {
        std::fprintf(
            stderr, "%s\n", qPrintable((e.hasError() ? e : features.error()).errorMessage()));
        std::exit(1);
    }
    const training::HillsByCell strongest = training::strongestHills(scene);
    const std::set<int> findable = findableClusters(scene, params);
    m_findable += static_cast<std::int64_t>(findable.size());
    std::set<int> reported;
    for (const auto& feature : features.value()) {
        ++m_reported;
        const int row = FeatureFinderUtilities::hashMz(
            feature.mzApexOfCluster, g_immutableFeatureFinderParameters.clusterMzHashFactor);
        const int hill = strongest.at({row, apexColumn(feature)});
        const int cluster = scene.hills[static_cast<std::size_t>(hill)].cluster;
        if (cluster < 0) {
            ++m_groundless;
        } else if (!reported.insert(cluster).second) {
            ++m_repeated;
        } else if (findable.contains(cluster)) {
            ++m_found;
            m_exact += isExact(feature, scene.clusters[static_cast<std::size_t>(cluster)]) ? 1 : 0;
        }
    }
}

void SceneReport::print(const char* kind) const
{
    const auto share = [](std::int64_t part, std::int64_t whole) {
        return static_cast<double>(part) / static_cast<double>(std::max<std::int64_t>(1, whole));
    };
    std::printf("%s: %lld clusters findable, %.2f%% found, %.2f%% of these with charge and mass "
                "right; %lld reported; per true cluster %.4f repeated, %.4f on noise\n",
                kind,
                static_cast<long long>(m_findable),
                100.0 * share(m_found, m_findable),
                100.0 * share(m_exact, m_found),
                static_cast<long long>(m_reported),
                share(m_repeated, distinct()),
                share(m_groundless, distinct()));
}

} // namespace zel::bench
