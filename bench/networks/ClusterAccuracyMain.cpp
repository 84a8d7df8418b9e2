// How often the networks are right on simulated slices that they were not trained on, beside the
// best cosine match; confusion by charge, accuracy by mass; clusters without truth after the
// subtraction. Usage: zel_cluster_accuracy [SCENES], 100 by default.

#include "bench/networks/CosineBaseline.h"
#include "common/core_mini/src/algo/ChargeDeterminatorNN.h"
#include "common/core_mini/src/algo/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/ImmutableFeatureFinderParameters.h"
#include "common/core_mini/src/algo/MonoisotopeDeterminatorNN.h"
#include "feature_finder/ScanIteratorV2HillClusteromatic.h"
#include "tools/training/OraclePeel.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace zel::bench {

namespace {

using training::Example;
using training::HillScene;
using training::SceneHill;
using training::SceneKind;

/// Training draws its scenes with seed 1.
constexpr std::uint64_t kHeldOutSeed = 2;
constexpr int kChargeCount = 11;

/// How many of how many.
struct Share
{
    std::int64_t part = 0;
    std::int64_t whole = 0;

    void count(bool isPart)
    {
        part += isPart ? 1 : 0;
        ++whole;
    }
    double percent() const
    {
        return whole == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    }
};

/// What was answered for one example.
struct Answers
{
    int charge;
    int offset; ///< given the true charge
    CosineMatch baseline;
    int baselineOffset; ///< given the true charge
};

/// A figure of the report: network and baseline beside each other.
struct Row
{
    Share network;
    Share baseline;
    void count(bool networkIsRight, bool baselineIsRight)
    {
        network.count(networkIsRight);
        baseline.count(baselineIsRight);
    }
};

class SliceReport
{
public:
    void add(const Example& example, const Answers& answers);
    void print() const;

private:
    void addCharge(const Example& example, const Answers& answers);
    void addOffset(const Example& example, const Answers& answers);
    void printConfusion() const;

    std::map<std::string, Row> m_rows; ///< by name
    std::array<std::array<std::int64_t, kChargeCount>, kChargeCount> m_confusion{};
    std::map<std::pair<int, int>, Share> m_byChargeAndMass; ///< charge right
    std::map<std::pair<int, int>, Share> m_offsetByMass;    ///< by mass and shift of the answer
};

constexpr std::array<double, 8> kMassLimitsDa = {700, 1000, 1500, 2000, 3000, 5000, 8000, 1e9};

int massClass(double massDa)
{
    return static_cast<int>(std::ranges::upper_bound(kMassLimitsDa, massDa) -
                            kMassLimitsDa.begin());
}

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
        const char* const name = example.massDa < 3000.0   ? "offset: >= 3 isotopes, S/N >= 10, below 3 kDa"
                                 : example.massDa < 8000.0 ? "offset: >= 3 isotopes, S/N >= 10, 3 to 8 kDa"
                                                           : "offset: >= 3 isotopes, S/N >= 10, above 8 kDa";
        m_rows[name].count(right, baselineRight);
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
        for (int charge = 1; charge < kChargeCount; ++charge) {
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
            std::printf("%8lld",
                        found == m_offsetByMass.end()
                            ? 0LL
                            : static_cast<long long>(found->second.whole));
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

/// What the clustering makes of the hills of whole scenes.
struct ClusterReport
{
    std::int64_t findable = 0; ///< clusters of three hills and more, the strongest of S/N 10
    std::int64_t found = 0;
    std::int64_t exact = 0;       ///< of those: charge and mass right
    std::int64_t repeated = 0;    ///< a cluster was reported once more
    std::int64_t groundless = 0; ///< found on a hill of noise
    std::int64_t reported = 0;

    /// True clusters among those reported.
    std::int64_t distinct() const { return reported - repeated - groundless; }
};

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

int binOf(double mz)
{
    return FeatureFinderUtilities::hashMz(mz,
                                          g_immutableFeatureFinderParameters.clusterMzHashFactor);
}

/// By cell of the hill matrix the strongest hill in it.
std::map<std::pair<int, int>, int> strongestHills(const HillScene& scene)
{
    std::map<std::pair<int, int>, int> hills;
    for (std::size_t i = 0; i < scene.hills.size(); ++i) {
        const SceneHill& hill = scene.hills[i];
        const auto [place, isNew] =
            hills.try_emplace({binOf(hill.mz), hill.column}, static_cast<int>(i));
        if (!isNew &&
            scene.hills[static_cast<std::size_t>(place->second)].intensity < hill.intensity) {
            place->second = static_cast<int>(i);
        }
    }
    return hills;
}

std::set<int> findableClusters(const HillScene& scene, const SettableFeatureFinderParameters& params)
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

template <typename Hill>
void clusterScene(const HillScene& scene, ClusterReport* report)
{
    SettableFeatureFinderParameters params;
    if (scene.kind == SceneKind::Frame) {
        params = SettableFeatureFinderParameters::trappedMobility();
    }
    ScanIteratorV2HillClusteromatic clusteromatic;
    QList<Hill> hills;
    for (const SceneHill& hill : scene.hills) {
        hills.append(toHill(hill, Hill()));
    }
    if (clusteromatic.init(params).hasError()) {
        std::exit(1);
    }
    const auto features = clusteromatic.buildChargeFeatures(hills);
    if (!features.isOk()) {
        std::exit(1);
    }
    const auto strongest = strongestHills(scene);
    const std::set<int> findable = findableClusters(scene, params);
    report->findable += static_cast<std::int64_t>(findable.size());
    std::set<int> reported;
    for (const auto& feature : features.value()) {
        ++report->reported;
        const int hill = strongest.at({binOf(feature.mzApexOfCluster), apexColumn(feature)});
        const int cluster = scene.hills[static_cast<std::size_t>(hill)].cluster;
        if (cluster < 0) {
            ++report->groundless;
        } else if (!reported.insert(cluster).second) {
            ++report->repeated;
        } else if (findable.contains(cluster)) {
            const auto& truth = scene.clusters[static_cast<std::size_t>(cluster)];
            ++report->found;
            report->exact += feature.charge == truth.charge &&
                                     std::abs(feature.monoIsotopicMass - truth.massDa) < 0.2
                                 ? 1
                                 : 0;
        }
    }
}

void print(const char* kind, const ClusterReport& report)
{
    const auto percent = [](std::int64_t part, std::int64_t whole) {
        return 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    };
    std::printf("%s: %lld clusters findable, %.2f%% found, %.2f%% of these with charge and mass "
                "right; %lld reported; per true cluster %.4f repeated, %.4f on noise\n",
                kind,
                static_cast<long long>(report.findable),
                percent(report.found, report.findable),
                percent(report.exact, report.found),
                static_cast<long long>(report.reported),
                0.01 * percent(report.repeated, report.distinct()),
                0.01 * percent(report.groundless, report.distinct()));
}

int run(std::uint64_t sceneCount)
{
    ChargeDeterminatorNN chargeDeterminator;
    MonoisotopeDeterminatorNN offsetDeterminator;
    const QString path = SettableFeatureFinderParameters().networkFilePath;
    if (chargeDeterminator.init(path).hasError() || offsetDeterminator.init(path).hasError()) {
        std::fputs("The networks cannot be loaded\n", stderr);
        return 1;
    }
    SliceReport slices;
    ClusterReport runs;
    ClusterReport frames;
    for (std::uint64_t number = 0; number < sceneCount; ++number) {
        const HillScene scene = training::drawScene(kHeldOutSeed, number);
        training::peelByTruth(scene, 0.0, [&](const Example& example) {
            Answers answers{};
            answers.charge = chargeDeterminator.determineCharge(example.slice);
            if (example.charge > 0) {
                answers.offset = offsetDeterminator.determineMonoisotopeOffset(
                    example.slice, example.mz, example.charge);
                answers.baseline = bestCosineMatch(example.slice, example.mz);
                answers.baselineOffset =
                    bestCosineMatch(example.slice, example.mz, example.charge).offset;
            }
            slices.add(example, answers);
        });
        if (scene.kind == SceneKind::Run) {
            clusterScene<HillD1>(scene, &runs);
        } else if (scene.kind == SceneKind::Frame) {
            clusterScene<HillD2>(scene, &frames);
        }
    }
    slices.print();
    std::puts("\nClustering of whole scenes:");
    print("runs", runs);
    print("frames", frames);
    return 0;
}

} // namespace

} // namespace zel::bench

int main(int argc, char** argv)
{
    return zel::bench::run(argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 100);
}
