// What finding the features of 10,000 peptide ions in a run of an hour costs, beside cutting their
// chromatograms.

#include "bench/support/Paired.h"
#include "bench/support/SyntheticRuns.h"
#include "ms_feature/finders/MsFeatureFinderSeg.h"
#include "tests/support/SourceProbe.h"
#include "tools/sources/mzml/MzmlDataSource.h"
#include "tools/sources/mzml/MzmlWriter.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

namespace zel::bench {

namespace {

using msreader::PeakPickingFilter;
using PsmsByHash = MsFeatureFinderBase::PsmsByHash;

constexpr int kIonCount = 10'000;
constexpr double kRunMinutes = 60.0;
constexpr double kProtonMass = 1.00727646677;

/// One or two matches for each ion, at random times and m/z.
PsmsByHash matches()
{
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> mz(400.0, 1200.0);
    std::uniform_real_distribution<double> time(7.0, kRunMinutes - 7.0);
    PsmsByHash psmsByHash;
    for (int ion = 0; ion < kIonCount; ++ion) {
        PeptideSpectrumMatch psm;
        psm.setSequence(QStringLiteral("ION%1").arg(ion));
        psm.setCharge(2);
        psm.setCalcMz(mz(random));
        psm.setWtCalcMr(2.0 * (psm.calcMz() - kProtonMass));
        psm.setScanTimeMinutes(time(random));
        psm.setScore(1.0);
        QList<PeptideSpectrumMatch> list = {psm};
        if (ion % 2 == 0) {
            psm.setScanTimeMinutes(psm.scanTimeMinutes() + 0.1);
            list.append(psm);
        }
        psmsByHash.insert(QStringLiteral("%1").arg(ion, 5, 10, QLatin1Char('0')), list);
    }
    return psmsByHash;
}

/// Hands out one ready chromatogram a box: a peak near its middle and one beside it, over noise, a
/// point a second.
class ReadyXics : public test::SourceProbe
{
public:
    ReadyXics()
        : SourceProbe(nullptr)
    {}

    Result<math::ClosedMultiInterval<double, 6>> retentionTimeRange() override
    {
        return math::ClosedMultiInterval<double, 6>(0.0, kRunMinutes);
    }
    using SourceProbe::xics;
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& boxes) override
    {
        if (m_xics.size() != boxes.size()) {
            m_xics.clear();
            std::mt19937_64 random(5);
            for (const XicDimensions& box : boxes) {
                m_xics.append(
                    xic(*box.timeInterval().minimum(), *box.timeInterval().maximum(), random));
            }
        }
        return m_xics;
    }

private:
    static QList<QPointF> xic(double start, double end, std::mt19937_64& random)
    {
        std::exponential_distribution<double> noise(1e-3);
        const double apex = (start + end) / 2;
        const auto bell = [](double x) { return std::exp(-0.5 * x * x); };
        QList<QPointF> points;
        for (double time = start; time <= end; time += 1.0 / 60.0) {
            points.append(QPointF(time,
                                  1e5 * bell((time - apex) / 0.1) +
                                      5e4 * bell((time - apex - 1.0) / 0.15) + noise(random)));
        }
        return points;
    }

    QList<QList<QPointF>> m_xics;
};

/// Finds all ions; returns how many have a feature.
qsizetype find(MsFeatureFinderBase& finder, msreader::MsDataSourceInterface* source)
{
    static const PsmsByHash given = matches();
    PsmsByHash psms = given;
    const auto features =
        finder.constructXicWindow(XicWindowFactory(), std::nullopt, source, &psms, {}).value();
    return std::count_if(
        features.begin(), features.end(), [](const auto& feature) { return feature.has_value(); });
}

void findIons(benchmark::State& state)
{
    ReadyXics source;
    MsFeatureFinderSeg finder{MsFeatureFinderSettings()};
    qsizetype found = find(finder, &source); // makes the chromatograms
    for ([[maybe_unused]] auto _ : state) {
        found = find(finder, &source);
    }
    state.SetItemsProcessed(state.iterations() * kIonCount);
    state.counters["found"] = static_cast<double>(found);
}

/// The counter `ratio` is the time of cutting and finding over that of cutting alone.
void cutAndFindAgainstCut(benchmark::State& state)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("run.mzML"));
    if (msreader::writeMzml(path, randomScans(3600, 1000, kRunMinutes)).hasError()) {
        state.SkipWithError("the run cannot be written");
        return;
    }
    const auto source = msreader::MzmlDataSource::open(path).value();
    const MsFeatureFinderSettings settings;
    QList<XicDimensions> boxes;
    for (const QList<PeptideSpectrumMatch>& list : matches()) {
        const double mz = list.constFirst().calcMz();
        const double margin = settings.mzMargin(mz);
        const double reach = settings.xicTimeWindowToExtract();
        boxes.append(XicDimensions({mz - margin, mz + margin},
                                   {list.constFirst().scanTimeMinutes() - reach,
                                    list.constLast().scanTimeMinutes() + reach}));
    }
    MsFeatureFinderSeg finder(settings);
    runPaired(
        state,
        [&] { benchmark::DoNotOptimize(find(finder, source.get())); },
        [&] { benchmark::DoNotOptimize(source->xics(boxes).value()); });
}

BENCHMARK(findIons)->Unit(benchmark::kMillisecond);
BENCHMARK(cutAndFindAgainstCut)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace zel::bench
