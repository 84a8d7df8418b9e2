#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace zel::training {

/// Where a simulated scene comes from; decides how far hills scatter and how wide a slice is cut.
enum class SceneKind {
    Run,   ///< hills of an LC-MS run; their m/z measured on centroids
    Frame, ///< hills of a mobility frame; their m/z on the grid of 500 bins per Th
    Scan,  ///< the centroids of a single scan
};

/// One simulated ion and its isotopes.
struct SceneCluster
{
    int charge = 0;
    double massDa = 0.0; ///< neutral, monoisotopic
    double mz = 0.0;     ///< of the monoisotopic peak
    int column = 0;
};

/// One hill: an isotope of a cluster, or noise.
struct SceneHill
{
    double mz = 0.0;
    int column = 0;
    double intensity = 0.0;
    int cluster = -1; ///< index of the cluster; -1: noise
    int isotope = -1; ///< steps above the monoisotopic peak
};

/// Hills as feature finding hands them to the clustering, with what they truly are.
struct HillScene
{
    std::uint64_t seed = 0; ///< the scene was drawn with this seed and number
    std::uint64_t number = 0;
    SceneKind kind = SceneKind::Run;
    int halfWidthColumns = 0; ///< of the slice around a hill
    int columnCount = 1;
    double noiseLevel = 0.0; ///< median intensity of the noise hills
    std::vector<SceneCluster> clusters;
    std::vector<SceneHill> hills;
};

/// Draws a scene: number of clusters, amount of noise, scatter and dynamic range differ from scene
/// to scene. The same seed and number give the same scene.
HillScene drawScene(std::uint64_t seed, std::uint64_t number);

/// By row and column of the matrix of hills the number of the strongest hill there.
using HillsByCell = std::map<std::pair<int, int>, int>;
HillsByCell strongestHills(const HillScene& scene);

} // namespace zel::training
