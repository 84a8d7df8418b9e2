#include "tools/training/HillScene.h"

#include "chemical_model/IsotopeDistribution.h"
#include "chemical_model/Residues.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
#include "common/stable/PhysicalConstants.h"
#include "common/stable/SharedNumbers.h"
#include "tools/simulate/PeptideSampling.h"
#include "tools/simulate/RandomStream.h"

#include <algorithm>
#include <cmath>

namespace zel::training {

using simulate::RandomStream;

namespace {

constexpr double kMzStart = 300.0;
constexpr double kMzEnd = 2000.0;
constexpr double kLeastMassDa = 300.0;
constexpr double kGreatestMassDa = 20000.0;
constexpr int kMaxCharge = 10;
/// Clusters and noise are so many for each piece of this width and of a slice's columns.
constexpr double kPieceWidthMz = 4.2;

double logUniform(RandomStream& random, double low, double high)
{
    return std::exp(random.uniform(std::log(low), std::log(high)));
}

bool chance(RandomStream& random, double probability)
{
    return random.uniform() < probability;
}

/// Hills of less than so many times the detection limit are lost now and then, stronger ones never.
constexpr double kLosableFloors = 10.0;

/// How a scene scatters its hills.
struct Scatter
{
    double mzPpm = 0.0;        ///< standard deviation of the m/z of an intense hill
    double intensity = 0.0;    ///< relative standard deviation, counting noise apart
    double columns = 0.0;      ///< standard deviation of the apex of an intense hill
    double floor = 0.0;        ///< hills below are not seen
    double splitShare = 0.0;   ///< hills that noise cuts in two
    double missingShare = 0.0; ///< weak hills that are lost for other reasons
};

/// A peptide of about the wanted mass; one in ten carries a phosphate, a glycan or a biotin, which
/// averagine does not expect.
chem::Molecule drawMolecule(RandomStream& random, double massDa)
{
    using chem::Element;
    constexpr chem::Molecule phosphate{{Element::H, 1}, {Element::P, 1}, {Element::O, 3}};
    constexpr chem::Molecule hexNAcHex{
        {Element::C, 14}, {Element::H, 23}, {Element::N, 1}, {Element::O, 10}};
    constexpr chem::Molecule biotin{
        {Element::C, 10}, {Element::H, 14}, {Element::N, 2}, {Element::O, 2}, {Element::S, 1}};
    chem::Molecule molecule = chem::kWater;
    if (chance(random, 0.1)) {
        const chem::Molecule* const kinds[] = {&phosphate, &hexNAcHex, &biotin};
        const chem::Molecule& modification = *kinds[random.below(3)];
        for (std::uint64_t i = random.below(3) + 1; i > 0; --i) {
            molecule += modification;
        }
    }
    while (molecule.monoisotopicMass() < massDa - 60.0) {
        molecule += chem::residueComposition(simulate::randomResidue(random));
    }
    return molecule;
}

chem::IsotopeProbabilities isotopesOf(const chem::Molecule& molecule)
{
    std::vector<chem::ElementAmount> composition;
    for (std::size_t i = 0; i < chem::kElementCount; ++i) {
        const auto element = static_cast<chem::Element>(i);
        if (molecule.count(element) > 0) {
            composition.push_back({element, static_cast<double>(molecule.count(element))});
        }
    }
    chem::IsotopeProbabilities pattern;
    [[maybe_unused]] const Error e = chem::aggregatedIsotopeDistribution(composition, &pattern);
    Q_ASSERT(!e.hasError());
    return pattern;
}

/// A charge at which the ion lies in the m/z range, all with the same probability.
int drawCharge(RandomStream& random, double massDa)
{
    std::vector<int> charges;
    for (int charge = 1; charge <= kMaxCharge; ++charge) {
        const double mz = ionMz(massDa, charge, 0);
        if (mz >= kMzStart && mz <= kMzEnd) {
            charges.push_back(charge);
        }
    }
    return charges.empty() ? 0 : charges[random.below(charges.size())];
}

/// The m/z that a hill is given in a scene of this kind.
double recordedMz(SceneKind kind, double mz)
{
    constexpr double frameBinsPerMz = 500.0;
    return kind == SceneKind::Frame ? std::floor(mz * frameBinsPerMz) / frameBinsPerMz : mz;
}

class SceneBuilder
{
public:
    SceneBuilder(std::uint64_t seed, std::uint64_t number);

    HillScene build();

private:
    void addCluster(double intensity);
    void addIsotope(const SceneCluster& cluster, int isotope, double stepDa, double ionCount);
    void addHill(SceneHill hill, double ionCount);
    void addNoise();
    int columnNear(int column, double spread);

    RandomStream m_random;
    Scatter m_scatter;
    HillScene m_scene;
    double m_pieces = 0.0; ///< pieces in the scene
};

SceneBuilder::SceneBuilder(std::uint64_t seed, std::uint64_t number)
    : m_random(seed, {RandomStream::Hills, number})
{
    m_scene.seed = seed;
    m_scene.number = number;
    const double kind = m_random.uniform();
    m_scene.kind = kind < 0.5 ? SceneKind::Run : kind < 0.8 ? SceneKind::Frame : SceneKind::Scan;
    m_scene.halfWidthColumns = m_scene.kind == SceneKind::Run     ? 8
                               : m_scene.kind == SceneKind::Frame ? 10
                                                                  : 0;
    m_scene.columnCount = m_scene.kind == SceneKind::Scan ? 1 : 30;
    m_scene.noiseLevel = logUniform(m_random, 2.0, 30.0);
    m_scatter.floor = m_scene.noiseLevel * m_random.uniform(0.3, 0.9);
    m_scatter.mzPpm = logUniform(m_random, 0.5, 5.0);
    m_scatter.intensity = logUniform(m_random, 0.01, 0.3);
    m_scatter.columns = m_scene.kind == SceneKind::Scan  ? 0.0
                        : m_scene.kind == SceneKind::Run ? logUniform(m_random, 0.2, 3.0)
                                                         : m_random.uniform(0.2, 1.0);
    m_scatter.splitShare = m_scene.kind == SceneKind::Scan ? 0.0 : m_random.uniform(0.0, 0.08);
    m_scatter.missingShare = m_random.uniform(0.0, 0.03);
    m_pieces = (kMzEnd - kMzStart) / kPieceWidthMz * m_scene.columnCount /
               (2 * m_scene.halfWidthColumns + 1);
}

HillScene SceneBuilder::build()
{
    const double clusters = logUniform(m_random, 0.02, 1.5) * m_pieces;
    for (int i = 0; i < clusters; ++i) {
        addCluster(m_scene.noiseLevel * logUniform(m_random, 5.0, 5000.0));
    }
    addNoise();
    return std::move(m_scene);
}

void SceneBuilder::addCluster(double intensity)
{
    const chem::Molecule molecule =
        drawMolecule(m_random, logUniform(m_random, kLeastMassDa, kGreatestMassDa));
    SceneCluster cluster;
    cluster.massDa = molecule.monoisotopicMass();
    cluster.charge = drawCharge(m_random, cluster.massDa);
    if (cluster.charge == 0) {
        return;
    }
    cluster.mz = ionMz(cluster.massDa, cluster.charge, 0);
    cluster.column =
        static_cast<int>(m_random.below(static_cast<std::uint64_t>(m_scene.columnCount)));
    m_scene.clusters.push_back(cluster);

    // The true centroids of the isotopes of peptides stand a little closer than 13C alone would.
    const double stepDa = m_random.uniform(1.0022, 1.0031);
    const chem::IsotopeProbabilities pattern = isotopesOf(molecule);
    for (int isotope = 0; isotope < pattern.size(); ++isotope) {
        addIsotope(cluster, isotope, stepDa, intensity * pattern[isotope]);
    }
}

void SceneBuilder::addIsotope(const SceneCluster& cluster,
                              int isotope,
                              double stepDa,
                              double ionCount)
{
    const bool canBeLost = ionCount < kLosableFloors * m_scatter.floor;
    if (ionCount < 0.05 * m_scatter.floor ||
        (canBeLost && chance(m_random, m_scatter.missingShare))) {
        return;
    }
    SceneHill hill;
    hill.cluster = static_cast<int>(m_scene.clusters.size()) - 1;
    hill.isotope = isotope;
    hill.mz = cluster.mz + isotope * stepDa / cluster.charge;
    hill.column = cluster.column;
    if (!chance(m_random, m_scatter.splitShare)) {
        addHill(hill, ionCount);
        return;
    }
    SceneHill second = hill;
    second.column += (chance(m_random, 0.5) ? 1 : -1) * static_cast<int>(2 + m_random.below(5));
    addHill(hill, ionCount);
    addHill(second, ionCount * m_random.uniform(0.2, 0.7));
}

void SceneBuilder::addHill(SceneHill hill, double ionCount)
{
    const double counted = m_random.poisson(ionCount);
    hill.intensity = counted * std::exp(m_scatter.intensity * m_random.boundedNormal());
    if (hill.intensity < m_scatter.floor) {
        return;
    }
    const double weakness = 1.0 + 4.0 / std::sqrt(std::max(1.0, counted));
    hill.mz *= 1.0 + kPartsPerMillion * m_scatter.mzPpm * weakness * m_random.boundedNormal();
    hill.mz = recordedMz(m_scene.kind, hill.mz);
    hill.column = columnNear(hill.column, m_scatter.columns * std::sqrt(weakness));
    m_scene.hills.push_back(hill);
}

void SceneBuilder::addNoise()
{
    const double perPiece =
        logUniform(m_random, 0.2, m_scene.kind == SceneKind::Scan ? 40.0 : 12.0);
    const double count = m_random.poisson(perPiece * m_pieces);
    for (int i = 0; i < count; ++i) {
        SceneHill hill;
        hill.mz = recordedMz(m_scene.kind, m_random.uniform(kMzStart - 2.0, kMzEnd + 10.0));
        hill.column =
            static_cast<int>(m_random.below(static_cast<std::uint64_t>(m_scene.columnCount)));
        // One in ten is an ion without visible isotopes.
        const double height = std::exp(0.5 * m_random.normal()) *
                              (chance(m_random, 0.1) ? logUniform(m_random, 1.0, 30.0) : 1.0);
        hill.intensity = std::max(m_scatter.floor, m_scene.noiseLevel * height);
        m_scene.hills.push_back(hill);
    }
}

int SceneBuilder::columnNear(int column, double spread)
{
    const auto shifted = column + static_cast<int>(std::lround(spread * m_random.boundedNormal()));
    return std::clamp(shifted, 0, m_scene.columnCount - 1);
}

} // namespace

HillScene drawScene(std::uint64_t seed, std::uint64_t number)
{
    return SceneBuilder(seed, number).build();
}

HillsByCell strongestHills(const HillScene& scene)
{
    HillsByCell hills;
    for (std::size_t i = 0; i < scene.hills.size(); ++i) {
        const SceneHill& hill = scene.hills[i];
        const int row = FeatureFinderUtilities::hashMz(
            hill.mz, g_immutableFeatureFinderParameters.clusterMzHashFactor);
        const auto [place, isNew] = hills.try_emplace({row, hill.column}, static_cast<int>(i));
        if (!isNew &&
            scene.hills[static_cast<std::size_t>(place->second)].intensity < hill.intensity) {
            place->second = static_cast<int>(i);
        }
    }
    return hills;
}

} // namespace zel::training
