// Chromatograms straight from a file: opening it, and one pass of bulk extraction, against a bare
// loop that only reads the same spectra through libpwiz. The file is $ZEL_BENCH_RUN (mzML, not
// compressed), else a random one is written.

#include "BulkXicExtractor.h"
#include "bench/support/Paired.h"
#include "bench/support/SyntheticRuns.h"
#include "tools/sources/mzml/MzmlDataSource.h"
#include "tools/sources/mzml/MzmlWriter.h"
#include "turbo/index/TurboXic.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <pwiz/data/msdata/DefaultReaderList.hpp>
#include <pwiz/data/msdata/MSDataFile.hpp>

namespace zel::bench {

namespace {

const QString& runPath()
{
    static const QTemporaryDir folder;
    static const QString path = [] {
        const QString given = qEnvironmentVariable("ZEL_BENCH_RUN");
        if (!given.isEmpty()) {
            return given;
        }
        const QString made = folder.filePath(QStringLiteral("random.mzML"));
        const Error e = msreader::writeMzml(made, randomScans(3000, 1000, 60.0));
        if (e.hasError()) {
            qFatal("%s", qPrintable(e.errorMessage()));
        }
        return made;
    }();
    return path;
}

std::size_t readThroughLibpwiz()
{
    const pwiz::msdata::DefaultReaderList readers;
    const pwiz::msdata::MSDataFile file(runPath().toStdString(), &readers);
    const pwiz::msdata::SpectrumList& spectra = *file.run.spectrumListPtr;
    std::size_t pointCount = 0;
    for (std::size_t i = 0; i < spectra.size(); ++i) {
        pointCount += spectra.spectrum(i, true)->getMZArray()->data.size();
    }
    return pointCount;
}

void openAndExtractAgainstLibpwizLoop(benchmark::State& state)
{
    const auto windows = randomWindows(100, 1.0, 60.0);
    runPaired(
        state,
        [&] {
            const auto source = msreader::MzmlDataSource::open(runPath()).value();
            benchmark::DoNotOptimize(BulkXicExtractor(source.get())
                                         .xic(windows, 1, msreader::PeakPickingFilter::Centroid, {})
                                         .value());
        },
        [] { benchmark::DoNotOptimize(readThroughLibpwiz()); });
}

/// One chromatogram over the run out of an index / by bulk extraction from the file.
void indexXicAgainstBulkOnMzml(benchmark::State& state)
{
    const auto source = msreader::MzmlDataSource::open(runPath()).value();
    TurboXic index;
    if (index.init(source.get(), QStringLiteral("run"), {}).hasError()) {
        state.SkipWithError("the index cannot be built");
        return;
    }
    const XicDimensions window({600.0 * (1 - 10e-6), 600.0 * (1 + 10e-6)}, {0.0, 60.0});
    runPaired(
        state,
        [&] { benchmark::DoNotOptimize(index.retrieveXic(window).value()); },
        [&] {
            benchmark::DoNotOptimize(
                BulkXicExtractor(source.get())
                    .xic(QList<XicDimensions>{window}, 1, msreader::PeakPickingFilter::Centroid, {})
                    .value());
        });
}

BENCHMARK(indexXicAgainstBulkOnMzml)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(openAndExtractAgainstLibpwizLoop)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

} // namespace

} // namespace zel::bench
