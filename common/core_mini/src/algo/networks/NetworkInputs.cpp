#include "common/core_mini/src/algo/isotopes/AveragineIsotopeModel.h"
#include "common/core_mini/src/algo/isotopes/IsotopeLattice_p.h"
#include "common/core_mini/src/algo/networks/NetworkInputs_p.h"
#include "common/stable/SharedNumbers.h"

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace zel::networkinputs {

namespace {

constexpr const ImmutableFeatureFinderParameters& kFixed = g_immutableFeatureFinderParameters;

constexpr int kLayoutVersion = 1;
constexpr int kGreatestCharge = kChargeOutputs - 1;

// Charge network; windows in bins.
constexpr int kFirstChargeStep = -6;
constexpr int kLastChargeStep = 8;
constexpr double kNarrowWindow = 3.0;
constexpr double kWideWindow = 12.0;
constexpr double kHalfwayWindow = 8.0;

// Offset network. Its wide window follows the m/z, but leaves room between the isotopes.
constexpr int kFirstOffsetStep = -18;
constexpr int kLastOffsetStep = 14;
constexpr int kOffsetStepCount = kLastOffsetStep - kFirstOffsetStep + 1;
constexpr double kOffsetNarrowWindow = 4.0;
constexpr double kOffsetWindowPpm = 8.0;
constexpr double kGreatestOffsetWindowShare = 0.18; // of the distance of two isotopes
constexpr double kBeyondSlice = -1.0;

using Pattern = std::array<double, kOffsetOutputs>;
using StepHeights = std::array<double, kOffsetStepCount>;

double centreOf(const StoredEntries& slice)
{
    return slice.valueAt(kFixed.clusterSliceCentre);
}

double shareOf(double height, double centre)
{
    constexpr double greatestShare = 4.0;
    return std::min(greatestShare, height / centre);
}

/// Isotopes of averagine, the highest being 1.
Pattern averaginePattern(double massDa)
{
    QList<double> ratios;
    const Result<int> apex =
        AveragineIsotopeModel::senko().peakIntensityRatiosFromMass(massDa, &ratios);
    Pattern pattern{};
    if (!apex.isOk()) {
        pattern[0] = 1.0;
        return pattern;
    }
    const qsizetype count = std::min<qsizetype>(ratios.size(), kOffsetOutputs);
    for (qsizetype k = 0; k < count; ++k) {
        pattern[static_cast<std::size_t>(k)] = ratios[k] / ratios[apex.value()];
    }
    return pattern;
}

/// Shares near the steps of the offset network.
StepHeights heightsOf(const IsotopeLattice& lattice, double centre)
{
    StepHeights heights{};
    for (int step = kFirstOffsetStep; step <= kLastOffsetStep; ++step) {
        heights[static_cast<std::size_t>(step - kFirstOffsetStep)] =
            lattice.covers(step) ? shareOf(lattice.greatestAt(step), centre) : kBeyondSlice;
    }
    return heights;
}

/// The cosine of the heights and the pattern, from one place before the monoisotopic peak to the
/// last isotope above 1 % of the highest, as far as there are heights.
double cosine(const StepHeights& heights, const Pattern& pattern, int offset)
{
    constexpr double leastShare = 0.01;
    int last = kOffsetOutputs - 1;
    while (last > 0 && pattern[static_cast<std::size_t>(last)] < leastShare) {
        --last;
    }
    CosineSum sum;
    for (int isotope = -1; isotope <= last; ++isotope) {
        const int index = isotope - offset - kFirstOffsetStep;
        if (index < 0 || index >= kOffsetStepCount ||
            heights[static_cast<std::size_t>(index)] == kBeyondSlice) {
            continue;
        }
        sum.add(heights[static_cast<std::size_t>(index)],
                isotope < 0 ? 0.0 : pattern[static_cast<std::size_t>(isotope)]);
    }
    return sum.cosine();
}

/// Fills a vector from its front.
class Writer
{
public:
    explicit Writer(int size)
        : m_values(size)
    {}

    void add(double value) { m_values(m_next++) = static_cast<float>(value); }
    void addHeight(double share) { add(share < 0.0 ? share : std::sqrt(share)); }

    Eigen::VectorXf take()
    {
        Q_ASSERT(m_next == m_values.size());
        return std::move(m_values);
    }

private:
    Eigen::VectorXf m_values;
    Eigen::Index m_next = 0;
};

} // namespace

bool isUsable(const Eigen::SparseVector<double>& slice)
{
    if (slice.size() != 2 * kFixed.clusterSliceHalfWidth + 1) {
        return false;
    }
    const double centre = centreOf(storedEntries(slice));
    return std::isfinite(centre) && centre > 0.0;
}

int chargeInputCount()
{
    constexpr int stepCount = kLastChargeStep - kFirstChargeStep + 1;
    return kGreatestCharge * (2 * stepCount + stepCount - 1) + 1;
}

int offsetInputCount()
{
    return 2 * kOffsetStepCount + 2 * kOffsetOutputs + 1 + kGreatestCharge;
}

Eigen::VectorXf chargeInputs(const Eigen::SparseVector<double>& slice)
{
    const StoredEntries entries = storedEntries(slice);
    const double centre = centreOf(entries);
    Writer inputs(chargeInputCount());
    for (int charge = 1; charge <= kGreatestCharge; ++charge) {
        for (const double window : {kNarrowWindow, kWideWindow}) {
            const IsotopeLattice lattice(entries, charge, window);
            for (int step = kFirstChargeStep; step <= kLastChargeStep; ++step) {
                inputs.addHeight(shareOf(lattice.greatestAt(step), centre));
            }
        }
        const IsotopeLattice lattice(entries, charge, kHalfwayWindow);
        for (int step = kFirstChargeStep; step < kLastChargeStep; ++step) {
            inputs.addHeight(shareOf(lattice.greatestAt(step + 0.5), centre));
        }
    }
    inputs.add(std::log10(static_cast<double>(entries.size())));
    return inputs.take();
}

Eigen::VectorXf offsetInputs(const Eigen::SparseVector<double>& slice, double mz, int charge)
{
    const StoredEntries entries = storedEntries(slice);
    const double centre = centreOf(entries);
    const double spacing = IsotopeLattice::spacingBins(charge);
    const double wide =
        std::clamp(kOffsetWindowPpm * kPartsPerMillion * mz * kFixed.clusterMzHashFactor,
                   kOffsetNarrowWindow,
                   kGreatestOffsetWindowShare * spacing);
    const StepHeights narrowHeights =
        heightsOf(IsotopeLattice(entries, charge, kOffsetNarrowWindow), centre);
    const StepHeights wideHeights = heightsOf(IsotopeLattice(entries, charge, wide), centre);
    // One pattern serves all offsets: 15 Da change it by less than its noise.
    const double massDa = (mz - kProtonMassDa) * charge;
    const Pattern pattern = averaginePattern(massDa);

    Writer inputs(offsetInputCount());
    std::ranges::for_each(narrowHeights, [&](double height) { inputs.addHeight(height); });
    std::ranges::for_each(wideHeights, [&](double height) { inputs.addHeight(height); });
    for (int offset = 0; offset < kOffsetOutputs; ++offset) {
        inputs.add(cosine(wideHeights, pattern, offset));
    }
    std::ranges::for_each(pattern, [&](double height) { inputs.addHeight(height); });
    inputs.add(std::log10(std::max(1.0, massDa)));
    for (int other = 1; other <= kGreatestCharge; ++other) {
        inputs.add(other == charge ? 1.0 : 0.0);
    }
    return inputs.take();
}

Eigen::VectorXf averagineCosines(const Eigen::VectorXf& offsetInputs)
{
    constexpr int heightCount = 2 * kOffsetStepCount; // which come before them
    return offsetInputs.segment(heightCount, kOffsetOutputs);
}

QJsonObject layout()
{
    return {{QStringLiteral("version"), kLayoutVersion},
            {QStringLiteral("binsPerTh"), kFixed.clusterMzHashFactor},
            {QStringLiteral("halfWidthBins"), kFixed.clusterSliceHalfWidth},
            {QStringLiteral("chargeSteps"), QJsonArray{kFirstChargeStep, kLastChargeStep}},
            {QStringLiteral("chargeWindowsBins"),
             QJsonArray{kNarrowWindow, kWideWindow, kHalfwayWindow}},
            {QStringLiteral("offsetSteps"), QJsonArray{kFirstOffsetStep, kLastOffsetStep}},
            {QStringLiteral("offsetNarrowWindowBins"), kOffsetNarrowWindow},
            {QStringLiteral("offsetWideWindowPpm"), kOffsetWindowPpm}};
}

} // namespace zel::networkinputs
