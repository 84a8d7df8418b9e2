// Bulk extraction of chromatograms: against itself with windows of another length, against a bare
// loop over the same pairs of scan and window, and against asking window by window.

#include "BulkXicExtractor.h"
#include "bench/support/Paired.h"
#include "bench/support/SyntheticRuns.h"
#include "tools/sources/MzmlDataSource.h"
#include "tools/sources/MzmlWriter.h"

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

/// Only searches and sums: the pairs of scan and window are known beforehand, the spectra lie in
/// memory.
class BareLoop
{
public:
    explicit BareLoop(const QList<XicDimensions>& windows)
        : m_windows(windows)
    {
        for (const msreader::InMemoryScan& scan : scans()) {
            m_times.push_back(scan.info.retentionTimeMinutes);
        }
        for (const XicDimensions& window : windows) {
            const auto first =
                std::ranges::lower_bound(m_times, *window.timeInterval().minimum() - 1e-6);
            const auto last =
                std::ranges::upper_bound(m_times, *window.timeInterval().maximum() + 1e-6);
            m_scanRanges.emplace_back(first - m_times.begin(), last - m_times.begin());
        }
    }

    Xics operator()() const
    {
        Xics xics(m_windows.size());
        for (qsizetype i = 0; i < m_windows.size(); ++i) {
            const Interval<double> mz = m_windows[i].mzInterval().intervals().front();
            const auto [first, last] = m_scanRanges[static_cast<std::size_t>(i)];
            xics[i].reserve(last - first);
            for (auto scan = first; scan < last; ++scan) {
                const QList<QPointF>& points = scans()[scan].points;
                const auto begin =
                    std::ranges::lower_bound(points, mz.start - 1e-10, {}, &QPointF::x);
                const auto end =
                    std::ranges::upper_bound(begin, points.cend(), mz.end + 1e-10, {}, &QPointF::x);
                double sum = 0.0;
                for (auto peak = begin; peak != end; ++peak) {
                    sum += peak->y();
                }
                xics[i].append(QPointF(m_times[static_cast<std::size_t>(scan)], sum));
            }
        }
        return xics;
    }

private:
    QList<XicDimensions> m_windows;
    std::vector<double> m_times;
    std::vector<std::pair<qsizetype, qsizetype>> m_scanRanges;
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
    const auto windows = randomWindows(2000, 1.0, kRunMinutes / 10);
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
