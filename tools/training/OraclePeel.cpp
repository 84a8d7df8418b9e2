#include "tools/training/OraclePeel.h"

#include "common/core_mini/src/algo/clusters/SpectraSubtractomatic.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "feature_finder/clusters/ClusterFrame_p.h"
#include "tools/simulate/RandomStream.h"

#include <cstdlib>
#include <map>
#include <set>
#include <vector>

namespace zel::training {

namespace {

constexpr const ImmutableFeatureFinderParameters& kFixed = g_immutableFeatureFinderParameters;

/// A hill is there as long as this share of it is left.
constexpr double kLeastLeftShare = 0.5;
/// A hill interferes from this share of the peak on.
constexpr double kInterferingShare = 0.05;
/// Peaks without a cluster that are shown; the others are too many and too much alike.
constexpr double kShownNothingShare = 0.2;

/// What is simulated is valid input.
void mustSucceed(const Error& e)
{
    if (e.hasError()) {
        qFatal("%s", qPrintable(e.errorMessage()));
    }
}

class Peeler
{
public:
    Peeler(const HillScene& scene, double failureShare);
    void run(const std::function<void(const Example&)>& use);

private:
    const SceneHill& hillAt(const ClusterFrame::Point& point) const;
    Example exampleAt(const ClusterFrame::Point& point);
    /// Counts what of the cluster and of others is in the slice.
    void lookAround(const ClusterFrame::Point& point, Example* example) const;

    void takeOut(const Example& example, const ClusterFrame::Point& point, ClusterFrame* frame);

    const HillScene& m_scene;
    double m_failureShare;
    simulate::RandomStream m_random;
    SpectraSubtractomatic m_subtractomatic;
    HillsByCell m_strongest;
    Eigen::SparseMatrix<double> m_frameRaw;
    std::multimap<int, std::size_t> m_hillsByRow;
    std::set<int> m_done; ///< clusters that were taken out
};

Peeler::Peeler(const HillScene& scene, double failureShare)
    : m_scene(scene)
    , m_failureShare(failureShare)
    , m_random(scene.seed, {simulate::RandomStream::Hills, scene.number, 1})
    , m_strongest(strongestHills(scene))
{
    SettableFeatureFinderParameters params;
    params.ppmTolerance = scene.kind == SceneKind::Frame ? 15 : 10;
    mustSucceed(m_subtractomatic.init(params));
    std::vector<HillPoint> points;
    for (const SceneHill& hill : scene.hills) {
        const int row = FeatureFinderUtilities::hashMz(hill.mz, kFixed.clusterMzHashFactor);
        m_hillsByRow.emplace(row, points.size());
        points.push_back({row, hill.column, hill.intensity});
    }
    Eigen::SparseMatrix<int> hillIndex;
    buildHillMatrices(points, &m_frameRaw, &hillIndex);
}

const SceneHill& Peeler::hillAt(const ClusterFrame::Point& point) const
{
    return m_scene.hills[static_cast<std::size_t>(m_strongest.at({point.row, point.column}))];
}

void Peeler::lookAround(const ClusterFrame::Point& point, Example* example) const
{
    const double peak = m_frameRaw.coeff(point.row, point.column);
    const SceneHill& own = hillAt(point);
    std::set<int> isotopes = {own.isotope};
    std::set<int> others;
    const auto end = m_hillsByRow.upper_bound(point.row + kFixed.clusterSliceHalfWidth);
    for (auto it = m_hillsByRow.lower_bound(point.row - kFixed.clusterSliceHalfWidth); it != end;
         ++it) {
        const SceneHill& hill = m_scene.hills[it->second];
        const double value = m_frameRaw.coeff(it->first, hill.column);
        const bool isThere = std::abs(hill.column - point.column) <= m_scene.halfWidthColumns &&
                             value >= kLeastLeftShare * hill.intensity;
        if (isThere && hill.cluster == own.cluster) {
            isotopes.insert(hill.isotope);
        } else if (isThere && hill.cluster >= 0 && value >= kInterferingShare * peak) {
            others.insert(hill.cluster);
        }
    }
    example->isotopesSeen = static_cast<int>(isotopes.size());
    example->interferingClusters = static_cast<int>(others.size());
}

Example Peeler::exampleAt(const ClusterFrame::Point& point)
{
    Example example;
    example.mz = FeatureFinderUtilities::unHashMz(point.row, kFixed.clusterMzHashFactor);
    example.signalToNoise = m_frameRaw.coeff(point.row, point.column) / m_scene.noiseLevel;
    const SceneHill& hill = hillAt(point);
    lookAround(point, &example);
    if (hill.cluster >= 0 && !m_done.contains(hill.cluster) && example.isotopesSeen >= 2) {
        const SceneCluster& cluster = m_scene.clusters[static_cast<std::size_t>(hill.cluster)];
        example.charge = cluster.charge;
        example.offset = hill.isotope;
        example.massDa = cluster.massDa;
    }
    return example;
}

void Peeler::run(const std::function<void(const Example&)>& use)
{
    ClusterFrame frame(&m_frameRaw, m_scene.halfWidthColumns);
    while (const auto point = frame.strongestPoint()) {
        Example example = exampleAt(*point);
        mustSucceed(frame.profileAt(*point, &example.slice));
        const bool isCluster = example.charge > 0;
        if (example.slice.nonZeros() >= 2 &&
            (isCluster || m_random.uniform() < kShownNothingShare)) {
            use(example);
        }
        if (isCluster && m_random.uniform() >= m_failureShare) {
            takeOut(example, *point, &frame);
        }
        frame.remove(*point);
    }
}

void Peeler::takeOut(const Example& example, const ClusterFrame::Point& point, ClusterFrame* frame)
{
    DecimatorMatrix decimator;
    mustSucceed(m_subtractomatic.buildChargeClusterDecimator(example.slice,
                                                             example.mz,
                                                             example.charge,
                                                             example.offset,
                                                             2 * frame->halfWidthColumns() + 1,
                                                             &decimator));
    frame->subtract(decimator.model, point);
    m_done.insert(hillAt(point).cluster);
}

} // namespace

void peelByTruth(const HillScene& scene,
                 double failureShare,
                 const std::function<void(const Example&)>& use)
{
    Peeler(scene, failureShare).run(use);
}

} // namespace zel::training
