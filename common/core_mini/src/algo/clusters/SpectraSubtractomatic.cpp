#include "common/core_mini/src/algo/clusters/SpectraSubtractomatic.h"

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/isotopes/AveragineIsotopeModel.h"
#include "common/core_mini/src/algo/isotopes/IsotopeLattice_p.h"
#include "common/core_mini/src/algo/isotopes/MolCalc.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/stable/SharedNumbers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace zel {

namespace {

constexpr const ImmutableFeatureFinderParameters& kFixed = g_immutableFeatureFinderParameters;

/// Isotopes below this share of the highest count neither for the score nor as found.
constexpr double kLeastShareOfScore = 0.01;
/// Isotopes from this share of the highest on decide the scale.
constexpr double kLeastShareOfScale = 0.2;
/// An isotope is found when it has this share of its model.
constexpr double kFoundShare = 0.2;
/// An entry of up to so many times its model is explained as a whole.
constexpr double kWholeEntryRatio = 1.5;
/// From the third isotope on, an entry may have this share of the highest isotope more: sulphur
/// makes them higher than averagine has them.
constexpr double kSulphurShare = 0.05;
constexpr int kFirstSulphurIsotope = 2;
/// Entries are removed from this distance of their place on, bins, however low the m/z.
constexpr double kLeastToleranceBins = 6.0;
/// The tolerance stays below this share of the distance of two isotopes.
constexpr double kGreatestToleranceShare = 0.12;

double toleranceBins(double mz, int charge, int ppmTolerance)
{
    const double wanted = std::max(
        kLeastToleranceBins, ppmTolerance * kPartsPerMillion * mz * kFixed.clusterMzHashFactor);
    return std::min(wanted, kGreatestToleranceShare * IsotopeLattice::spacingBins(charge));
}

/// One isotope of the model beside what was observed in its place.
struct IsotopeSlot
{
    int isotope = 0;       ///< steps from the monoisotopic peak
    int step = 0;          ///< steps from the peak of the slice
    double theory = 0.0;   ///< share of the highest isotope
    double observed = 0.0; ///< greatest entry
};

/// The isotopes that the slice covers, from one before the monoisotopic peak on.
std::vector<IsotopeSlot> isotopeSlots(const IsotopeLattice& lattice,
                                      const QList<double>& pattern,
                                      int monoOffset)
{
    const double highest = *std::max_element(pattern.cbegin(), pattern.cend());
    std::vector<IsotopeSlot> slots;
    for (int isotope = -1; isotope < pattern.size(); ++isotope) {
        const int step = isotope - monoOffset;
        if (lattice.covers(step)) {
            const double theory = isotope < 0 ? 0.0 : pattern[isotope] / highest;
            slots.push_back({isotope, step, theory, lattice.greatestAt(step)});
        }
    }
    return slots;
}

/// What the highest isotope of the model amounts to; 0 when no isotope is there.
double scaleOf(const std::vector<IsotopeSlot>& slots)
{
    std::vector<std::pair<double, double>> ratiosAndWeights;
    double weightSum = 0.0;
    double scaleOfPeak = std::numeric_limits<double>::infinity();
    for (const IsotopeSlot& slot : slots) {
        if (slot.observed <= 0.0 || slot.theory <= 0.0) {
            continue;
        }
        const double ratio = slot.observed / slot.theory;
        if (slot.step == 0) {
            scaleOfPeak = ratio;
        }
        if (slot.theory >= kLeastShareOfScale) {
            ratiosAndWeights.emplace_back(ratio, slot.theory);
            weightSum += slot.theory;
        }
    }
    std::ranges::sort(ratiosAndWeights);
    double weightBelow = 0.0;
    for (const auto& [ratio, weight] : ratiosAndWeights) {
        weightBelow += weight;
        if (weightBelow >= 0.5 * weightSum) {
            return std::min(ratio, scaleOfPeak);
        }
    }
    return std::isfinite(scaleOfPeak) ? scaleOfPeak : 0.0;
}

/// How many slots count for the score: up to the last isotope that is high enough.
std::size_t countingSlots(const std::vector<IsotopeSlot>& slots)
{
    std::size_t count = slots.size();
    while (count > 0 && slots[count - 1].theory < kLeastShareOfScore) {
        --count;
    }
    return count;
}

double cosineOf(std::span<const IsotopeSlot> slots)
{
    CosineSum sum;
    for (const IsotopeSlot& slot : slots) {
        sum.add(slot.observed, slot.theory);
    }
    return sum.cosine();
}

int foundIsotopeCount(std::span<const IsotopeSlot> slots, double scale)
{
    return static_cast<int>(std::ranges::count_if(slots, [scale](const IsotopeSlot& slot) {
        return slot.theory > 0.0 && slot.observed > 0.0 &&
               slot.observed >= kFoundShare * scale * slot.theory;
    }));
}

/// What an isotope of this height explains of the entries in its place, entry by entry: those up to
/// a limit as a whole, and what is left of it of the others, in proportion.
std::vector<double> explained(std::span<const double> entries, double height, double wholeLimit)
{
    std::vector<double> parts(entries.size(), 0.0);
    double left = height;
    double greaterSum = 0.0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i] <= wholeLimit) {
            parts[i] = entries[i];
            left -= entries[i];
        } else {
            greaterSum += entries[i];
        }
    }
    for (std::size_t i = 0; i < entries.size() && left > 0.0; ++i) {
        if (entries[i] > wholeLimit) {
            parts[i] = left * entries[i] / greaterSum;
        }
    }
    return parts;
}

struct BinPart
{
    int sliceIndex;
    double amount;
};

/// What the cluster explains of the slice, ascending in index.
std::vector<BinPart> explainedBins(const IsotopeLattice& lattice,
                                   std::span<const IsotopeSlot> slots,
                                   double scale)
{
    std::vector<BinPart> bins;
    for (const IsotopeSlot& slot : slots) {
        if (slot.theory > 0.0) {
            const StoredEntries entries = lattice.entriesAt(slot.step);
            const double height = scale * slot.theory;
            const double sulphur =
                slot.isotope >= kFirstSulphurIsotope ? kSulphurShare * scale : 0.0;
            const std::vector<double> parts =
                explained(entries.values, height, kWholeEntryRatio * height + sulphur);
            for (std::size_t i = 0; i < parts.size(); ++i) {
                if (parts[i] > 0.0) {
                    bins.push_back({entries.indices[i], parts[i]});
                }
            }
        }
    }
    return bins;
}

/// The bins in each column of a matrix of hills; those outside it are dropped.
Eigen::SparseMatrix<double> spread(const std::vector<BinPart>& bins, int centreRow, int width)
{
    const int rowCount = SpectraSubtractomatic::clusterRows();
    Eigen::SparseMatrix<double> model(rowCount, width);
    model.reserve(static_cast<Eigen::Index>(bins.size()) * width);
    for (int column = 0; column < width; ++column) {
        model.startVec(column);
        for (const BinPart& bin : bins) {
            const int row = centreRow - kFixed.clusterSliceCentre + bin.sliceIndex;
            if (row >= 0 && row < rowCount) {
                model.insertBack(row, column) = bin.amount;
            }
        }
    }
    model.finalize();
    return model;
}

Error checkArguments(
    const Eigen::SparseVector<double>& profile, double mz, int charge, int monoOffset, int width)
{
    if (profile.size() != 2 * kFixed.clusterSliceHalfWidth + 1) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("A slice has %1 bins, but %2 came")
                             .arg(2 * kFixed.clusterSliceHalfWidth + 1)
                             .arg(profile.size()));
    }
    const int row = FeatureFinderUtilities::hashMz(mz, kFixed.clusterMzHashFactor);
    if (row < 0 || row >= SpectraSubtractomatic::clusterRows() || charge < 1 ||
        charge > kFixed.maxClusterCharge || monoOffset < 0 || width < 1) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("An isotope cluster has an m/z up to %1, a charge of 1 to %2, an offset "
                           "that is not negative and one column or more, but m/z %3, charge %4, "
                           "offset %5 and %6 columns came")
                .arg(kFixed.maxMz)
                .arg(kFixed.maxClusterCharge)
                .arg(mz)
                .arg(charge)
                .arg(monoOffset)
                .arg(width));
    }
    return kNoError;
}

} // namespace

Error SpectraSubtractomatic::init(const SettableFeatureFinderParameters& params)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::aboveThreshold(
        params.ppmTolerance,
        0,
        ErrorUtilsParam::Inclusive,
        Error(kBadParameterError,
              QStringLiteral("A mass tolerance cannot be negative, but is %1 ppm")
                  .arg(params.ppmTolerance))));
    m_ppmTolerance = params.ppmTolerance;
    m_addedProtons = params.unchargedMassFlag;
    m_isInit = true;
    return kNoError;
}

Error SpectraSubtractomatic::buildChargeClusterDecimator(
    Eigen::SparseVector<double, 0, int> profile,
    double mz,
    int charge,
    int monoOffset,
    int width,
    DecimatorMatrix* out) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(
        ErrorUtils::equal(m_isInit, true, Error(kError, "The subtraction was not initialized")));
    ZEL_RETURN_IF_ERROR(checkArguments(profile, mz, charge, monoOffset, width));
    const double massDa =
        molcalc::calculateUnchargedMassFromMzCharge(mz, charge, monoOffset, m_addedProtons);
    const int centreRow = FeatureFinderUtilities::hashMz(mz, kFixed.clusterMzHashFactor);
    if (massDa < 0.0) { // one stray point below m/z 1 must not end a run
        *out = {0.0, 0, spread({}, centreRow, width)};
        return kNoError;
    }
    QList<double> pattern;
    ZEL_RETURN_IF_ERROR(
        AveragineIsotopeModel::senko().peakIntensityRatiosFromMass(massDa, &pattern).error());

    const IsotopeLattice lattice(
        storedEntries(profile), charge, toleranceBins(mz, charge, m_ppmTolerance));
    const std::vector<IsotopeSlot> slots = isotopeSlots(lattice, pattern, monoOffset);
    const std::span<const IsotopeSlot> counting = std::span(slots).first(countingSlots(slots));
    const double scale = scaleOf(slots);

    out->averagineScore = cosineOf(counting);
    out->isotopeCount = foundIsotopeCount(counting, scale);
    out->model = spread(explainedBins(lattice, slots, scale), centreRow, width);
    return kNoError;
}

int SpectraSubtractomatic::clusterRows()
{
    static const int rows =
        FeatureFinderUtilities::hashMz(kFixed.maxMz, static_cast<int>(kFixed.clusterMzHashFactor)) +
        kFixed.clusterSliceHalfWidth;
    return rows;
}

} // namespace zel
