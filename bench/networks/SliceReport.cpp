#include "bench/networks/SliceReport.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace zel::bench {

using training::Example;

namespace {

constexpr std::array<double, 10> kMassLimitsDa = {
    400, 700, 1000, 1500, 2000, 3000, 5000, 8000, 10000, 1e9};

int massClass(double massDa)
{
    return static_cast<int>(std::ranges::upper_bound(kMassLimitsDa, massDa) -
                            kMassLimitsDa.begin());
}

} // namespace

void SliceReport::add(const Example& example, const Answers& answers)
{
    const auto truth = static_cast<std::size_t>(example.charge);
    ++m_confusion[truth][static_cast<std::size_t>(answers.charge)];
    if (example.charge == 0) {
        m_rows["none: answered none"].count(answers.charge == 0, false);
        return;
    }
    addCharge(example, answers);
    addOffset(example, answers);
}

void SliceReport::addCharge(const Example& example, const Answers& answers)
{
    const bool right = answers.charge == example.charge;
    const bool baselineRight = answers.baseline.charge == example.charge;
    const auto isMultiple = [&example](int charge) {
        return charge == 2 * example.charge || 2 * charge == example.charge;
    };
    m_byChargeAndMass[{massClass(example.massDa), example.charge}].count(right);
    m_rows["charge: all"].count(right, baselineRight);
    m_rows["charge: 2 z or z / 2, all"].count(isMultiple(answers.charge),
                                              isMultiple(answers.baseline.charge));
    if (example.isotopesSeen >= 3 && example.signalToNoise >= 10.0) {
        m_rows[example.interferingClusters == 0 ? "charge: >= 3 isotopes, S/N >= 10, alone"
                                                : "charge: >= 3 isotopes, S/N >= 10, interfered"]
            .count(right, baselineRight);
        m_rows["charge: 2 z or z / 2, >= 3 isotopes, S/N >= 10"].count(
            isMultiple(answers.charge), isMultiple(answers.baseline.charge));
    }
}

void SliceReport::addOffset(const Example& example, const Answers& answers)
{
    const int shift = answers.offset - example.offset;
    const bool right = shift == 0;
    const bool baselineRight = answers.baselineOffset == example.offset;
    m_offsetByMass[{massClass(example.massDa), std::clamp(shift, -3, 3)}].count(true);
    m_rows["offset: all"].count(right, baselineRight);
    if (example.isotopesSeen >= 3 && example.signalToNoise >= 10.0) {
        const char* const masses = example.massDa < 3000.0   ? "below 3 kDa"
                                   : example.massDa < 8000.0 ? "3 to 8 kDa"
                                                             : "above 8 kDa";
        m_rows[std::string("offset: >= 3 isotopes, S/N >= 10, ") + masses].count(right,
                                                                                 baselineRight);
        m_rows["offset: within 1, >= 3 isotopes, S/N >= 10"].count(
            std::abs(shift) <= 1, std::abs(answers.baselineOffset - example.offset) <= 1);
    }
}

void SliceReport::printConfusion() const
{
    std::puts("\nCharge, truth down, answer across:");
    for (std::size_t truth = 0; truth < kChargeCount; ++truth) {
        std::printf("%4zu", truth);
        for (const std::int64_t count : m_confusion[truth]) {
            std::printf("%8lld", static_cast<long long>(count));
        }
        std::puts("");
    }
    std::puts("\nCharge right, %, by mass (Da, below) down and charge across:");
    for (std::size_t mass = 0; mass < kMassLimitsDa.size(); ++mass) {
        std::printf("%10.0f", kMassLimitsDa[mass]);
        for (int charge = 1; charge < static_cast<int>(kChargeCount); ++charge) {
            const auto found = m_byChargeAndMass.find({static_cast<int>(mass), charge});
            std::printf("%8.2f", found == m_byChargeAndMass.end() ? 0.0 : found->second.percent());
        }
        std::puts("");
    }
    std::puts("\nOffset, answer less truth (-3 and below ... 3 and above) across, by mass:");
    for (std::size_t mass = 0; mass < kMassLimitsDa.size(); ++mass) {
        std::printf("%10.0f", kMassLimitsDa[mass]);
        for (int shift = -3; shift <= 3; ++shift) {
            const auto found = m_offsetByMass.find({static_cast<int>(mass), shift});
            std::printf(
                "%8lld",
                found == m_offsetByMass.end() ? 0LL : static_cast<long long>(found->second.whole));
        }
        std::puts("");
    }
}

void SliceReport::print() const
{
    std::puts("                                                  slices  network  best cosine");
    for (const auto& [name, row] : m_rows) {
        std::printf("%-48s%8lld%8.2f%%%12.2f%%\n",
                    name.c_str(),
                    static_cast<long long>(row.network.whole),
                    row.network.percent(),
                    row.baseline.percent());
    }
    printConfusion();
}

} // namespace zel::bench
