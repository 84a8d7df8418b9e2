// Bulk extraction of chromatograms: against itself with windows of another length, against a bare
// loop over the same pairs of scan and window, and against asking window by window.

#include "BulkXicExtractor.h"
#include "bench/support/Paired.h"
#include "bench/support/SyntheticRuns.h"
#include "tools/sources/mzml/MzmlDataSource.h"
#include "tools/sources/mzml/MzmlWriter.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace zel::bench {

namespace {

using msreader::PeakPickingFilter;
using Xics = QList<QList<QPointF>>;

constexpr double kRunMinutes = 60.0;
constexpr int kScanCount = 6000;
constexpr int kPeakCount = 1000;
constexpr int kWindowCount = 100'000;

const QList<msreader::InMemoryScan>& scans()
{
    static const QList<msreader::InMemoryScan> made =
        randomScans(kScanCount, kPeakCount, kRunMinutes);
    return made;
}

msreader::MsDataSourceInterface* memorySource()
{
    static const auto source =
        msreader::InMemoryDataSource::create(scans(), QStringLiteral("random")).value();
    return source.get();
}

/// A shorter run of the same kind as an mzML file.
msreader::MsDataSourceInterface* mzmlSource()
{
    static const QTemporaryDir folder;
    static const auto source = [] {
        const QString path = folder.filePath(QStringLiteral("random.mzML"));
        const Error e = msreader::writeMzml(path, scans().first(kScanCount / 10));
        if (e.hasError()) {
            qFatal("%s", qPrintable(e.errorMessage()));
        }
        return msreader::MzmlDataSource::open(path).value();
    }();
    return source.get();
}

Xics extract(msreader::MsDataSourceInterface* source, const QList<XicDimensions>& windows)
{
    return BulkXicExtractor(source).xic(windows, 1, PeakPickingFilter::Centroid, {}).value();
}

Xics extractOneByOne(msreader::MsDataSourceInterface* source, const QList<XicDimensions>& windows)
{
    Xics xics;
    for (const XicDimensions& window : windows) {
        xics += extract(source, {window});
    }
    return xics;
}

/// Only searches and sums: which windows take a scan is known beforehand, the spectra lie in
/// memory.
class BareLoop
{
public:
    explicit BareLoop(const QList<XicDimensions>& windows)
        : m_windowsOfScan(static_cast<std::size_t>(scans().size()))
        , m_pointCounts(windows.size(), 0)
    {
        for (qsizetype i = 0; i < windows.size(); ++i) {
            m_mzs.push_back(windows[i].mzInterval().intervals().front());
            for (qsizetype scan = 0; scan < scans().size(); ++scan) {
                if (windows[i].timeInterval().contains(scans()[scan].info.retentionTimeMinutes)) {
                    m_windowsOfScan[static_cast<std::size_t>(scan)].push_back(i);
                    ++m_pointCounts[i];
                }
            }
        }
    }

    Xics operator()() const
    {
        Xics xics(m_pointCounts.size());
        for (qsizetype i = 0; i < xics.size(); ++i) {
            xics[i].reserve(m_pointCounts[i]);
        }
        for (qsizetype scan = 0; scan < scans().size(); ++scan) {
            const QList<QPointF>& points = scans()[scan].points;
            const double time = scans()[scan].info.retentionTimeMinutes;
            for (const qsizetype i : m_windowsOfScan[static_cast<std::size_t>(scan)]) {
                const Interval<double> mz = m_mzs[static_cast<std::size_t>(i)];
                const auto begin =
                    std::ranges::lower_bound(points, mz.start - 1e-10, {}, &QPointF::x);
                const auto end =
                    std::ranges::upper_bound(begin, points.cend(), mz.end + 1e-10, {}, &QPointF::x);
                double sum = 0.0;
                for (auto peak = begin; peak != end; ++peak) {
                    sum += peak->y();
                }
                xics[i].append(QPointF(time, sum));
            }
        }
        return xics;
    }

private:
    std::vector<Interval<double>> m_mzs;
    std::vector<std::vector<qsizetype>> m_windowsOfScan;
    QList<qsizetype> m_pointCounts;
};

void check(benchmark::State& state, bool holds)
{
    if (!holds) {
        state.SkipWithError("the two sides differ");
    }
}

void bulkAgainstHalfAsLongTwiceAsMany(benchmark::State& state)
{
    const auto longWindows = randomWindows(kWindowCount, 1.0, kRunMinutes);
    const auto shortWindows = randomWindows(2 * kWindowCount, 0.5, kRunMinutes);
    runPaired(
        state,
        [&] { benchmark::DoNotOptimize(extract(memorySource(), longWindows)); },
        [&] { benchmark::DoNotOptimize(extract(memorySource(), shortWindows)); });
}

void bulkAgainstBareLoop(benchmark::State& state)
{
    const auto windows = randomWindows(kWindowCount, 1.0, kRunMinutes);
    const BareLoop bareLoop(windows);
    check(state, bareLoop() == extract(memorySource(), windows));
    runPaired(
        state,
        [&] { benchmark::DoNotOptimize(extract(memorySource(), windows)); },
        [&] { benchmark::DoNotOptimize(bareLoop()); });
}

void bulkAgainstOneByOneInMemory(benchmark::State& state)
{
    const auto windows = randomWindows(kWindowCount, 1.0, kRunMinutes);
    check(state,
          extractOneByOne(memorySource(), windows.first(100)) ==
              extract(memorySource(), windows.first(100)));
    runPaired(
        state,
        [&] { benchmark::DoNotOptimize(extract(memorySource(), windows)); },
        [&] { benchmark::DoNotOptimize(extractOneByOne(memorySource(), windows)); });
}

void bulkAgainstOneByOneOnMzml(benchmark::State& state)
{
    const auto windows = randomWindows(1000, 1.0, kRunMinutes / 10);
    mzmlSource(); // writes and opens the file before the clock starts
    runPaired(
        state,
        [&] { benchmark::DoNotOptimize(extract(mzmlSource(), windows)); },
        [&] { benchmark::DoNotOptimize(extractOneByOne(mzmlSource(), windows)); });
}

BENCHMARK(bulkAgainstHalfAsLongTwiceAsMany)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(bulkAgainstBareLoop)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(bulkAgainstOneByOneInMemory)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(bulkAgainstOneByOneOnMzml)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace zel::bench
