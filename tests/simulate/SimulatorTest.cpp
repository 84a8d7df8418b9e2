#include "tools/simulate/Simulator.h"

#include "common/stable/PhysicalConstants.h"
#include "tests/support/Matchers.h"
#include "tools/simulate/ScanRenderer.h"
#include "tools/simulate/SimulatedPeptide.h"
#include "tools/sources/memory/InMemoryDataSource.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zel::simulate {

using msreader::InMemoryScan;
using msreader::PeakPickingFilter;
using test::HasError;
using test::valueOf;
using ::testing::HasSubstr;

namespace {

/// A run small enough for a test.
SimulationSettings smallRun()
{
    SimulationSettings settings;
    settings.endMinutes = 8.0;
    settings.driftMinutes = 0.3;
    settings.peptideCount = 40;
    settings.missingFraction = 0.0;
    return settings;
}

SimulationSettings withMobility(SimulationSettings settings)
{
    settings.endMinutes = 4.0;
    settings.driftMinutes = 0.1;
    settings.peptideCount = 20;
    settings.backgroundIonCount = std::min(settings.backgroundIonCount, 10);
    settings.mobilityScanCount = 120;
    return settings;
}

/// Of values with weights.
struct Moments
{
    double sum = 0.0;
    double first = 0.0;
    double second = 0.0;

    void add(double value, double weight)
    {
        sum += weight;
        first += weight * value;
        second += weight * value * value;
    }
    double mean() const { return first / sum; }
    double deviation() const { return std::sqrt(second / sum - mean() * mean()); }
};

/// The intensity that a scan has around an m/z.
double intensityAt(const InMemoryScan& scan, double mz, double halfWidth)
{
    double sum = 0.0;
    for (const QPointF& point : scan.points) {
        sum += std::abs(point.x() - mz) <= halfWidth ? point.y() : 0.0;
    }
    return sum;
}

bool equalScans(const SimulatedRun& a, const SimulatedRun& b)
{
    return std::equal(a.scans.cbegin(),
                      a.scans.cend(),
                      b.scans.cbegin(),
                      b.scans.cend(),
                      [](const InMemoryScan& x, const InMemoryScan& y) {
                          return x.info.scanId == y.info.scanId && x.points == y.points;
                      });
}

} // namespace

TEST(SimulatorTest, HoldsTheStatedAreaWithoutNoise)
{
    for (const PeakPickingFilter kind : {PeakPickingFilter::Centroid, PeakPickingFilter::Profile}) {
        for (const bool hasMobility : {false, true}) {
            SimulationSettings settings = smallRun().withoutNoise();
            settings = hasMobility ? withMobility(settings) : settings;
            settings.peptideCount = 10;
            settings.scanKind = kind;
            settings.resolvingPower = 20000;
            const SimulatedRun run = valueOf(simulateRun(settings, 0));
            ASSERT_GT(run.truth.size(), 5);
            double signal = 0.0;
            for (const InMemoryScan& scan : run.scans) {
                signal += intensityAt(scan, 0.0, 1e9);
            }
            double area = 0.0;
            for (const TrueIon& ion : run.truth) {
                area += ion.area;
            }
            const double minutesPerScan = settings.scanIntervalSeconds / 60.0;
            // Cut are 6e-7 of the peaks in each dimension, and profile points at the range's end.
            EXPECT_NEAR(signal * minutesPerScan / area, 1.0, 1e-5)
                << static_cast<int>(kind) << " " << hasMobility;
        }
    }
}

TEST(SimulatorTest, PutsEachIonWhereTheTruthSays)
{
    qsizetype ionCount = 0;
    for (std::uint64_t seed = 1; seed <= 6; ++seed) {
        SimulationSettings settings = smallRun().withoutNoise();
        settings.seed = seed;
        settings.peptideCount = 1;
        const SimulatedRun run = valueOf(simulateRun(settings, 0));
        ionCount += run.truth.size();
        for (const TrueIon& ion : run.truth) {
            for (qsizetype k = 0; k < std::min<qsizetype>(4, ion.isotopeFractions.size()); ++k) {
                const double mz = ionMz(ion.mass, ion.charge, static_cast<int>(k));
                double sum = 0.0;
                QPointF highest;
                for (const InMemoryScan& scan : run.scans) {
                    const double intensity = intensityAt(scan, mz, 0.01);
                    const double minutes = scan.info.retentionTimeMinutes;
                    sum += intensity * settings.scanIntervalSeconds / 60.0;
                    highest = intensity > highest.y() ? QPointF(minutes, intensity) : highest;
                    const double height = intensity / (ion.apexIntensity * ion.isotopeFractions[k]);
                    EXPECT_EQ(height >= 0.01, minutes >= ion.rtStart && minutes <= ion.rtEnd)
                        << minutes;
                }
                EXPECT_NEAR(sum / (ion.area * ion.isotopeFractions[k]), 1.0, 1e-5) << seed;
                // The highest of scans a second apart; the peak is flat there.
                EXPECT_NEAR(highest.x(), ion.rtApex, 0.51 / 60.0) << seed;
                EXPECT_NEAR(highest.y() / (ion.apexIntensity * ion.isotopeFractions[k]), 1.0, 0.02);
            }
        }
    }
    EXPECT_GT(ionCount, 6);
}

TEST(SimulatorTest, RepeatsItselfForOneSeed)
{
    SimulationSettings settings = smallRun();
    settings.sampleCount = 3;
    settings.missingFraction = 0.2;
    const QList<SimulatedRun> runs = valueOf(simulate(settings));
    ASSERT_EQ(runs.size(), 3);
    // One sample alone is the same as in the company of others.
    EXPECT_TRUE(equalScans(runs[2], valueOf(simulateRun(settings, 2))));
    EXPECT_FALSE(equalScans(runs[1], runs[2]));
    settings.seed = 2;
    EXPECT_FALSE(equalScans(runs[0], valueOf(simulateRun(settings, 0))));
}

TEST(ScanRendererTest, MergesWhatTheInstrumentCannotTellApart)
{
    SimulationSettings settings = SimulationSettings().withoutNoise();
    settings.resolutionModel = ResolutionModel::TimeOfFlight;
    settings.resolvingPower = 10000;
    const ScanRenderer renderer(settings);
    RandomStream random(1, {});
    ASSERT_NEAR(renderer.fwhm(500.0), 0.05, 1e-12);
    std::vector<Signal> close = {{500.03, 100.0}, {500.0, 300.0}, {500.2, 7.0}, {900.0, 0.0}};
    const QList<QPointF> points = renderer.render(close, random);
    ASSERT_EQ(points.size(), 2);
    EXPECT_NEAR(points[0].x(), 500.0075, 1e-9);
    EXPECT_NEAR(points[0].y(), 400.0, 1e-9);
    EXPECT_EQ(points[1], QPointF(500.2, 7.0));
}

TEST(ScanRendererTest, AddsNoiseOfTheStatedSize)
{
    SimulationSettings settings = SimulationSettings().withoutNoise();
    const auto spreadOf = [](const SimulationSettings& noisy) {
        const ScanRenderer renderer(noisy);
        RandomStream random(4, {});
        Moments ppm;
        Moments share;
        for (int i = 0; i < 20'000; ++i) {
            std::vector<Signal> signals = {{600.0, 4e4}};
            const QPointF point = renderer.render(signals, random).value(0);
            ppm.add((point.x() - 600.0) / 600.0 * 1e6, 1.0);
            share.add((point.y() - 4e4) / 4e4, 1.0);
        }
        EXPECT_NEAR(ppm.mean(), 0.0, 0.1);
        EXPECT_NEAR(share.mean(), 0.0, 0.01);
        return QPointF(ppm.deviation(), share.deviation());
    };
    settings.mzNoisePpm = 3.0;
    EXPECT_NEAR(spreadOf(settings).x(), 3.0, 0.1);
    settings.intensityNoise = 0.1;
    EXPECT_NEAR(spreadOf(settings).y(), 0.1, 0.005);
    settings.intensityNoise = 0.0;
    for (const double ions : {40.0, 400.0}) { // counted in two ways
        settings.intensityPerIon = 4e4 / ions;
        EXPECT_NEAR(spreadOf(settings).y(), 1.0 / std::sqrt(ions), 0.005);
    }
}

TEST(SimulatorTest, RefusesSettingsThatMakeNoSense)
{
    const auto refused = [](auto change) {
        SimulationSettings settings = smallRun();
        change(settings);
        return simulateRun(settings, 0);
    };
    const std::pair<const char*, void (*)(SimulationSettings&)> rows[] = {
        {"minCharge", [](SimulationSettings& s) { s.minCharge = 0; }},
        {"mzStart", [](SimulationSettings& s) { s.mzStart = std::nan(""); }},
        {"driftMinutes", [](SimulationSettings& s) { s.driftMinutes = 1.0; }},
        {"mobilitySigma",
         [](SimulationSettings& s) {
             s.mobilityScanCount = 10;
             s.mobilitySigma = 0.05;
         }},
        {"scans, more than", [](SimulationSettings& s) { s.endMinutes = 1e6; }},
        {"0.6 min",
         [](SimulationSettings& s) {
             s.endMinutes = 0.6;
             s.driftMinutes = 0.0;
         }},
    };
    for (const auto& [name, change] : rows) {
        const auto result = refused(change);
        ASSERT_THAT(result, HasError(kBadParameterError)) << name;
        EXPECT_THAT(result.error().message().toStdString(), HasSubstr(name));
    }
    EXPECT_THAT(simulateRun(smallRun(), 1), HasError(kBadParameterError));
    EXPECT_THAT(simulateRun(smallRun(), -1), HasError(kBadParameterError));
}

} // namespace zel::simulate
