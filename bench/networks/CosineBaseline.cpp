#include "bench/networks/CosineBaseline.h"

#include "common/core_mini/src/algo/isotopes/AveragineIsotopeModel.h"
#include "common/core_mini/src/algo/isotopes/IsotopeLattice_p.h"
#include "common/core_mini/src/algo/isotopes/MolCalc.h"

namespace zel::bench {

namespace {

constexpr int kGreatestCharge = 10;
constexpr int kGreatestOffset = 15;
constexpr double kLeastMassDa = 200.0;
constexpr double kTolerancePpm = 8.0;
constexpr double kLeastToleranceBins = 4.0;
constexpr double kLeastShare = 0.01;

/// From one place before the monoisotopic peak to the last isotope of 1 % of the highest; 0 when
/// nothing but the peak itself is there.
double cosineOf(const IsotopeLattice& lattice, const QList<double>& pattern, int offset)
{
    const double highest = *std::ranges::max_element(pattern);
    qsizetype last = pattern.size() - 1;
    while (pattern[last] < kLeastShare * highest) {
        --last;
    }
    CosineSum sum;
    bool hasNeighbour = false;
    for (int isotope = -1; isotope <= last; ++isotope) {
        const int step = isotope - offset;
        if (lattice.covers(step)) {
            const double observed = lattice.greatestAt(step);
            const double theory = isotope < 0 ? 0.0 : pattern[isotope];
            hasNeighbour = hasNeighbour || (step != 0 && isotope >= 0 && observed > 0.0);
            sum.add(observed, theory);
        }
    }
    return hasNeighbour ? sum.cosine() : 0.0;
}

} // namespace

CosineMatch bestCosineMatch(const Eigen::SparseVector<double>& slice, double mz, int charge)
{
    CosineMatch best;
    best.charge = charge;
    QList<double> pattern;
    const double wanted =
        kTolerancePpm * 1e-6 * mz * g_immutableFeatureFinderParameters.clusterMzHashFactor;
    for (int z = charge == 0 ? 1 : charge; z <= (charge == 0 ? kGreatestCharge : charge); ++z) {
        const double spacing = IsotopeLattice::spacingBins(z);
        const IsotopeLattice lattice(
            storedEntries(slice), z, std::clamp(wanted, kLeastToleranceBins, 0.18 * spacing));
        for (int offset = 0; offset <= kGreatestOffset; ++offset) {
            const double massDa = molcalc::calculateUnchargedMassFromMzCharge(mz, z, offset);
            if (massDa < kLeastMassDa || !AveragineIsotopeModel::senko()
                                              .peakIntensityRatiosFromMass(massDa, &pattern)
                                              .isOk()) {
                continue;
            }
            const double cosine = cosineOf(lattice, pattern, offset);
            if (cosine > best.cosine) {
                best = {z, offset, cosine};
            }
        }
    }
    return best;
}

} // namespace zel::bench
