#include "tools/training/OraclePeel.h"

#include "common/core_mini/src/algo/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/SettableFeatureFinderParameters.h"
#include "common/core_mini/src/algo/SpectraSubtractomatic.h"
#include "common/core_mini/src/algo/ImmutableFeatureFinderParameters.h"

#include <map>
#include <set>

namespace zel::training {

namespace {

constexpr const ImmutableFeatureFinderParameters& kFixed = g_immutableFeatureFinderParameters;

class Peeler
{
public:
    Peeler(const HillScene& scene, double failureShare);
    void run(const std::function<void(const Example&)>& use);

private:
    const SceneHill& hillAt(const ClusterFrame::Point& point) const;
    Example exampleAt(const ClusterFrame::Point& point);
    void lookAround(const ClusterFrame::Point& point, int cluster, Example* example) const;

    const HillScene& m_scene;
    double m_failureShare;
    simulate::RandomStream m_random;
    SpectraSubtractomatic m_subtractomatic;
    Eigen::SparseMatrix<double> m_frameRaw;
    Eigen::SparseMatrix<int> m_hillIndex;
    std::vector<HillPoint> m_points;
    std::map<std::pair<int, int>, int> m_strongest; ///< by row and column: strongest hill of a cell
    std::multimap<int, int> m_byRow;                     ///< hill by row
    std::set<int> m_done; ///< clusters that were taken out
};

Peeler::Peeler(const HillScene& scene, double failureShare)
    : m_scene(scene)
    , m_failureShare(failureShare)
    , m_random(scene.seed, {simulate::RandomStream::Hills, scene.number, 1})
{
    SettableFeatureFinderParameters params;
    params.ppmTolerance = scene.kind == SceneKind::Frame ? 15 : 10;
    (void)m_subtractomatic.init(params);
    for (std::size_t i = 0; i < scene.hills.size(); ++i) {
        const SceneHill& hill = scene.hills[i];
        const int row = FeatureFinderUtilities::hashMz(hill.mz, kFixed.clusterMzHashFactor);
        m_points.push_back({row, hill.column, hill.intensity});
        const auto [place, isNew] =
            m_strongest.try_emplace({row, hill.column}, static_cast<int>(i));
        if (!isNew && scene.hills[place->second].intensity < hill.intensity) {
            place->second = static_cast<int>(i);
        }
        m_byRow.emplace(row, static_cast<int>(i));
    }
    buildHillMatrices(m_points, &m_frameRaw, &m_hillIndex);
}

const SceneHill& Peeler::hillAt(const ClusterFrame::Point& point) const
{
    return m_scene.hills[m_strongest.at({point.row, point.column})];
}

void Peeler::lookAround(const ClusterFrame::Point& point, int cluster, Example* example) const
{
    const double peak = m_frameRaw.coeff(point.row, point.column);
    std::set<int> isotopes = {hillAt(point).isotope};
    std::set<int> isotopesAboveNoise;
    if (example->signalToNoise >= 10.0) {
        isotopesAboveNoise = isotopes;
    }
    std::set<int> others;
    const auto end = m_byRow.upper_bound(point.row + kFixed.clusterSliceHalfWidth);
    for (auto it = m_byRow.lower_bound(point.row - kFixed.clusterSliceHalfWidth); it != end; ++it) {
        const SceneHill& hill = m_scene.hills[it->second];
        if (hill.cluster < 0 || std::abs(hill.column - point.column) > m_scene.halfWidthColumns) {
            continue;
        }
        const double value = m_frameRaw.coeff(it->first, hill.column);
        if (value < 0.5 * hill.intensity) {
            continue;
        }
        if (hill.cluster == cluster) {
            isotopes.insert(hill.isotope);
            if (value >= 10.0 * m_scene.noiseLevel) {
                isotopesAboveNoise.insert(hill.isotope);
            }
        } else if (value >= 0.05 * peak) {
            others.insert(hill.cluster);
        }
    }
    example->isotopesSeen = static_cast<int>(isotopes.size());
    example->isotopesAboveNoise = static_cast<int>(isotopesAboveNoise.size());
    example->interferingClusters = static_cast<int>(others.size());
}

Example Peeler::exampleAt(const ClusterFrame::Point& point)
{
    Example example;
    example.kind = m_scene.kind;
    example.mz = FeatureFinderUtilities::unHashMz(point.row, kFixed.clusterMzHashFactor);
    example.signalToNoise = m_frameRaw.coeff(point.row, point.column) / m_scene.noiseLevel;
    const SceneHill& hill = hillAt(point);
    lookAround(point, hill.cluster, &example);
    if (hill.cluster >= 0 && !m_done.contains(hill.cluster) && example.isotopesSeen >= 2) {
        const SceneCluster& cluster = m_scene.clusters[hill.cluster];
        example.charge = cluster.charge;
        example.offset = hill.isotope;
        example.massDa = cluster.massDa;
    }
    return example;
}

void Peeler::run(const std::function<void(const Example&)>& use)
{
    constexpr double nothingShare = 0.2; // of the peaks without a cluster, shown
    ClusterFrame frame(&m_frameRaw, m_scene.halfWidthColumns);
    while (const auto point = frame.strongestPoint()) {
        Example example = exampleAt(*point);
        (void)frame.profileAt(*point, &example.slice);
        const bool isCluster = example.charge > 0;
        if (example.slice.nonZeros() >= 2 && (isCluster || m_random.uniform() < nothingShare)) {
            use(example);
        }
        if (isCluster && m_random.uniform() >= m_failureShare) {
            DecimatorMatrix decimator;
            (void)m_subtractomatic.buildChargeClusterDecimator(example.slice,
                                                         example.mz,
                                                         example.charge,
                                                         example.offset,
                                                         2 * frame.halfWidthColumns() + 1,
                                                         &decimator);
            frame.subtract(decimator.model, *point);
            m_done.insert(hillAt(*point).cluster);
        }
        frame.remove(*point);
    }
}

} // namespace

void peelByTruth(const HillScene& scene,
                 double failureShare,
                 const std::function<void(const Example&)>& use)
{
    Peeler(scene, failureShare).run(use);
}

} // namespace zel::training
