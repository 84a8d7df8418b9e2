// The index of a run: what building it, asking it and loading it cost against the bare work.

#include "BulkXicExtractor.h"
#include "bench/support/Paired.h"
#include "bench/support/SyntheticRuns.h"
#include "common/stable/MemoryInfo.h"
#include "common/stable/PointList.h"
#include "turbo/index/TurboXic.h"

#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cmath>
#include <cstring>
#include <thread>

namespace zel::bench {

namespace {

using msreader::MsQuery;
using msreader::PeakPickingFilter;

constexpr int kScanCount = 5000;
constexpr int kPeakCount = 1000;
constexpr double kRunMinutes = 60.0;

/// A run in memory and its index.
struct Run
{
    explicit Run(int peakCount)
        : scans(randomScans(kScanCount, peakCount, kRunMinutes))
        , source(msreader::InMemoryDataSource::create(scans, QStringLiteral("random")).value())
    {
        TurboXicSettings settings;
        settings.maxIonCount = peakCount;
        index = std::make_unique<TurboXic>(settings);
        if (index->init(source.get(), QStringLiteral("random"), {}).hasError()) {
            qFatal("the index cannot be built");
        }
    }

    QList<msreader::InMemoryScan> scans;
    QSharedPointer<msreader::InMemoryDataSource> source;
    std::unique_ptr<TurboXic> index;
};

const Run& run()
{
    static const Run made(kPeakCount);
    return made;
}

QList<XicDimensions> wholeRunWindows(int count)
{
    QList<XicDimensions> windows;
    for (const XicDimensions& window : randomWindows(count, 1.0, kRunMinutes)) {
        windows.append(XicDimensions(window.mzInterval(), {0.0, kRunMinutes}));
    }
    return windows;
}

void retrieve(const TurboXic& index, const QList<XicDimensions>& windows)
{
    for (const XicDimensions& window : windows) {
        benchmark::DoNotOptimize(index.retrieveXic(window).value());
    }
}

/// The same as an index does: reads the spectra, trims them, and copies every kept peak once.
void readAndCopy()
{
    QList<MsQuery> queries;
    for (const msreader::InMemoryScan& scan : run().scans) {
        queries.append(MsQuery(scan.info.scanId, PeakPickingFilter::Centroid));
    }
    std::vector<double> values;
    std::vector<int> bins;
    for (qsizetype start = 0; start < queries.size(); start += 250) {
        QList<QList<QPointF>> spectra = run().source->scanData(queries.mid(start, 250)).value();
        for (QList<QPointF>& spectrum : spectra) {
            removeLowIntensePoints(spectrum, kPeakCount, true);
            for (const QPointF& peak : std::as_const(spectrum)) {
                bins.push_back(static_cast<int>(std::floor(peak.x() * 10000 + 0.5)));
                values.push_back(peak.y());
            }
        }
    }
    benchmark::DoNotOptimize(values.data());
    benchmark::DoNotOptimize(bins.data());
}

/// Two bisections a scan and the sum, over columns of bins and values.
class BareColumns
{
public:
    BareColumns()
    {
        for (const msreader::InMemoryScan& scan : run().scans) {
            std::vector<int> bins;
            std::vector<double> values;
            for (const QPointF& peak : scan.points) {
                bins.push_back(static_cast<int>(std::floor(peak.x() * 10000 + 0.5)));
                values.push_back(peak.y());
            }
            m_bins.push_back(bins);
            m_values.push_back(values);
        }
    }

    QList<QPointF> xic(const XicDimensions& window) const
    {
        const int first =
            static_cast<int>(std::ceil((*window.mzInterval().minimum() - 1e-10) * 10000));
        const int last =
            static_cast<int>(std::floor((*window.mzInterval().maximum() + 1e-10) * 10000));
        QList<QPointF> points;
        points.reserve(static_cast<qsizetype>(m_bins.size()));
        for (std::size_t scan = 0; scan < m_bins.size(); ++scan) {
            const auto begin = std::lower_bound(m_bins[scan].begin(), m_bins[scan].end(), first);
            const auto end = std::upper_bound(begin, m_bins[scan].end(), last);
            double sum = 0.0;
            for (auto bin = begin; bin != end; ++bin) {
                sum += m_values[scan][static_cast<std::size_t>(bin - m_bins[scan].begin())];
            }
            points.append(
                QPointF(run().scans[static_cast<qsizetype>(scan)].info.retentionTimeMinutes, sum));
        }
        return points;
    }

private:
    std::vector<std::vector<int>> m_bins;
    std::vector<std::vector<double>> m_values;
};

void buildAgainstReadAndCopy(benchmark::State& state)
{
    TurboXicSettings settings;
    settings.maxIonCount = kPeakCount;
    run();
    runPaired(
        state,
        [&settings] {
            TurboXic index(settings);
            benchmark::DoNotOptimize(
                index.init(run().source.get(), QStringLiteral("random"), {}).hasError());
        },
        readAndCopy);
}

void wholeRunXicAgainstBareLoop(benchmark::State& state)
{
    const auto windows = wholeRunWindows(200);
    const BareColumns columns;
    runPaired(
        state,
        [&windows] { retrieve(*run().index, windows); },
        [&] {
            for (const XicDimensions& window : windows) {
                benchmark::DoNotOptimize(columns.xic(window));
            }
        });
}

void wholeRunXicAgainstBulk(benchmark::State& state)
{
    const auto windows = wholeRunWindows(20);
    runPaired(
        state,
        [&windows] { retrieve(*run().index, windows); },
        [&windows] {
            for (const XicDimensions& window : windows) {
                benchmark::DoNotOptimize(BulkXicExtractor(run().source.get())
                                             .xic({window}, 1, PeakPickingFilter::Centroid, {})
                                             .value());
            }
        });
}

void manyShortXicsAgainstOneBulkCall(benchmark::State& state)
{
    const auto windows = randomWindows(10'000, 2.0, kRunMinutes);
    runPaired(
        state,
        [&windows] { retrieve(*run().index, windows); },
        [&windows] {
            benchmark::DoNotOptimize(BulkXicExtractor(run().source.get())
                                         .xic(windows, 1, PeakPickingFilter::Centroid, {})
                                         .value());
        });
}

/// The same windows hold about as many peaks, but the rest of the m/z range ten times as many.
void xicsInAFullerRange(benchmark::State& state)
{
    static const Run full = [] { return Run(10 * kPeakCount); }();
    QList<XicDimensions> narrow;
    QList<XicDimensions> wide;
    for (const XicDimensions& window : wholeRunWindows(200)) {
        const double centre = (*window.mzInterval().minimum() + *window.mzInterval().maximum()) / 2;
        narrow.append(
            XicDimensions({centre * (1 - 1e-6), centre * (1 + 1e-6)}, window.timeInterval()));
        wide.append(
            XicDimensions({centre * (1 - 10e-6), centre * (1 + 10e-6)}, window.timeInterval()));
    }
    runPaired(
        state,
        [&narrow] { retrieve(*full.index, narrow); },
        [&wide] { retrieve(*run().index, wide); });
}

void cacheLoadAgainstReadAndCopy(benchmark::State& state)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("run") + TurboXic::extension());
    if (run().index->save(path).hasError()) {
        state.SkipWithError("the cache cannot be written");
        return;
    }
    TurboXicSettings settings;
    settings.maxIonCount = kPeakCount;
    runPaired(
        state,
        [&] {
            TurboXic index(settings);
            benchmark::DoNotOptimize(index.load(path).hasError());
        },
        [&path] {
            QFile file(path);
            file.open(QIODevice::ReadOnly);
            const QByteArray bytes = file.readAll();
            std::vector<char> copy(static_cast<std::size_t>(bytes.size()));
            std::memcpy(copy.data(), bytes.constData(), copy.size());
            benchmark::DoNotOptimize(copy.data());
        });
}

/// Bytes that the process holds on the heap.
double heldBytes()
{
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd);
}

/// The counters are bytes for each stored entry: held by a finished index, its directory of m/z
/// ranges included, and the greatest resident size while it is built, with the chunk of spectra in
/// hand and the room reserved in advance as far as it was written to.
void indexMemory(benchmark::State& state)
{
    TurboXicSettings settings;
    settings.maxIonCount = kPeakCount;
    const auto entryCount = static_cast<double>(kScanCount) * kPeakCount;
    run();
    for ([[maybe_unused]] auto _ : state) {
        malloc_trim(0);
        const double heldBefore = heldBytes();
        QFile resetPeak(QStringLiteral("/proc/self/clear_refs"));
        if (!resetPeak.open(QIODevice::WriteOnly) || resetPeak.write("5") != 1) {
            state.SkipWithError("the peak of the resident size cannot be reset");
            return;
        }
        resetPeak.close();
        const auto residentBefore = static_cast<double>(MemoryInfo().peakProcessWorkingSet());
        TurboXic index(settings);
        benchmark::DoNotOptimize(
            index.init(run().source.get(), QStringLiteral("random"), {}).hasError());
        state.counters["heldBytesPerEntry"] = (heldBytes() - heldBefore) / entryCount;
        state.counters["peakBytesPerEntry"] =
            (static_cast<double>(MemoryInfo().peakProcessWorkingSet()) - residentBefore) /
            entryCount;
    }
}

/// The counter `ratio` is the time of two threads with half of the windows each over that of one
/// with all of them.
void twoThreadsAgainstOne(benchmark::State& state)
{
    const auto windows = wholeRunWindows(400);
    runPaired(
        state,
        [&windows] {
            std::thread second([&windows] { retrieve(*run().index, windows.mid(200)); });
            retrieve(*run().index, windows.first(200));
            second.join();
        },
        [&windows] { retrieve(*run().index, windows); });
}

BENCHMARK(buildAgainstReadAndCopy)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(wholeRunXicAgainstBareLoop)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(wholeRunXicAgainstBulk)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(manyShortXicsAgainstOneBulkCall)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(xicsInAFullerRange)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(cacheLoadAgainstReadAndCopy)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(indexMemory)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(twoThreadsAgainstOne)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace zel::bench
