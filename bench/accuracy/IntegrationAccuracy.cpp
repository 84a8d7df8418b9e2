// How well peaks are integrated on simulated chromatograms whose limits are known: the three modes
// of XicIntegrator, and beside them limits by the second derivative (Savitzky-Golay), which lost.
//
//   integration_accuracy [traces per row]

#include "XicIntegrator.h"
#include "common/core_mini/src/algo/EigenUtilities.h"
#include "common/stable/MathUtils.h"
#include "ms_feature/finders/MsFeatureFinderFactory.h"
#include "tools/simulate/EmgPeak.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

using namespace zel;

constexpr double kStepMinutes = 1.0 / 60.0;
constexpr double kLimitShare = 0.01; ///< true limits are where a peak has this share of its apex

struct TruePeak
{
    double apexSample;
    double height;
    double sigmaSamples;
    double tauSamples;
};

/// One row of the table: what its traces hold. Heights are multiples of the noise.
struct Scene
{
    const char* name;
    int sampleCount;
    std::vector<TruePeak> peaks;
    double baselineRise = 0.0; ///< from the first to the last sample
    double gapShare = 0.0;     ///< of samples that read 0
};

struct Trace
{
    QList<QPointF> xic;
    QList<QPointF> noiseless; ///< without baseline
};

Trace render(const Scene& scene, std::mt19937_64& random)
{
    std::normal_distribution<double> noise;
    std::uniform_real_distribution<double> phase(-0.5, 0.5);
    std::bernoulli_distribution isGap(scene.gapShare);
    const double shift = phase(random);
    Trace trace;
    for (int i = 0; i < scene.sampleCount; ++i) {
        double height = 0.0;
        for (const TruePeak& peak : scene.peaks) {
            const simulate::EmgPeak shape(peak.sigmaSamples, peak.tauSamples);
            height += peak.height * shape.height(i - peak.apexSample - shift) / shape.height(0.0);
        }
        const double baseline = scene.baselineRise * i / scene.sampleCount;
        const double measured = isGap(random) ? 0.0 : height + baseline + noise(random);
        trace.xic.append(QPointF(kStepMinutes * i, std::max(measured, 0.0)));
        trace.noiseless.append(QPointF(kStepMinutes * i, height));
    }
    return trace;
}

Interval<double> trueLimits(const TruePeak& peak)
{
    const simulate::EmgPeak shape(peak.sigmaSamples, peak.tauSamples);
    return {kStepMinutes * (peak.apexSample + shape.start(kLimitShare)),
            kStepMinutes * (peak.apexSample + shape.end(kLimitShare))};
}

double area(const QList<QPointF>& points, const Interval<double>& limits)
{
    double sum = 0.0;
    for (const QPointF& point : points) {
        sum += limits.start <= point.x() && point.x() <= limits.end ? point.y() : 0.0;
    }
    return sum;
}

QList<Interval<double>> byIntegrator(const Scene& scene, const Trace& trace, int mode)
{
    XicBaselineLimitsDetectorOptions detector;
    detector.detectionMode = mode;
    XicIntegrator integrator;
    integrator.setMsFeatureFinderFactory(QSharedPointer<MsFeatureFinderFactory>::create());
    if (integrator.init(detector, {}).hasError()) {
        return {};
    }
    const double target =
        scene.peaks.empty() ? scene.sampleCount / 2.0 : scene.peaks.front().apexSample;
    const auto result = integrator.integratePeak(trace.xic, kStepMinutes * target);
    return result.isOk() ? result.value().allPeakLimitsSplitsApplied().value()
                         : QList<Interval<double>>();
}

/// The trace under a Savitzky-Golay filter of nine points.
Eigen::VectorXd filtered(const Eigen::VectorXd& heights, int derivative)
{
    Eigen::VectorXd kernel;
    Eigen::VectorXd out = heights;
    if (EigenUtilities::buildSavitzkyGolayKernel(9, 2, derivative, 1, &kernel).hasError() ||
        EigenUtilities::savitzkyGolaySmooth(kernel, &out).hasError()) {
        std::abort();
    }
    return out;
}

/// Peaks are minima of the second derivative that stand out of its noise. From there a limit goes
/// out through the inflection to where the curve bends down again, or to 1 % of the height.
QList<Interval<double>> bySecondDerivative(const Trace& trace)
{
    Eigen::VectorXd heights(trace.xic.size());
    for (qsizetype i = 0; i < trace.xic.size(); ++i) {
        heights[i] = trace.xic[i].y();
    }
    const Eigen::VectorXd smoothed = filtered(heights, 0);
    const Eigen::VectorXd bend = filtered(heights, 2);
    std::vector<double> magnitudes(static_cast<std::size_t>(bend.size()));
    std::ranges::transform(bend, magnitudes.begin(), [](double value) { return std::abs(value); });
    const double least = 5.0 * 1.4826 * MathUtils::median(std::move(magnitudes));
    const auto limitFrom = [&](Eigen::Index apex, Eigen::Index step) {
        Eigen::Index i = apex;
        bool isPastInflection = false;
        while (i + step >= 0 && i + step < bend.size() &&
               smoothed[i + step] >= kLimitShare * smoothed[apex]) {
            i += step;
            isPastInflection = isPastInflection || bend[i] > 0.0;
            if (isPastInflection && bend[i] < 0.0) {
                break;
            }
        }
        return trace.xic[i].x();
    };
    QList<Interval<double>> peaks;
    for (Eigen::Index i = 1; i + 1 < bend.size(); ++i) {
        if (bend[i] < -least && bend[i] < bend[i - 1] && bend[i] <= bend[i + 1]) {
            peaks.append({limitFrom(i, -1), limitFrom(i, 1)});
        }
    }
    return peaks;
}

struct Score
{
    int peakCount = 0;
    int foundCount = 0;
    int falseCount = 0;
    int rightTraceCount = 0; ///< every true peak alone in a piece of its own
    std::vector<double> widthErrors;
    std::vector<double> areaErrors;
};

void judge(const Scene& scene,
           const Trace& trace,
           const QList<Interval<double>>& pieces,
           Score& score)
{
    std::vector<int> apexesOfPiece(static_cast<std::size_t>(pieces.size()), 0);
    bool isRight = true;
    for (const TruePeak& peak : scene.peaks) {
        ++score.peakCount;
        const double apex = kStepMinutes * peak.apexSample;
        const auto piece = std::find_if(pieces.begin(), pieces.end(), [apex](const auto& limits) {
            return limits.start <= apex && apex <= limits.end;
        });
        if (piece == pieces.end()) {
            isRight = false;
            continue;
        }
        ++score.foundCount;
        isRight = ++apexesOfPiece[static_cast<std::size_t>(piece - pieces.begin())] == 1 && isRight;
        const Interval<double> truth = trueLimits(peak);
        const double width = truth.end - truth.start;
        score.widthErrors.push_back(std::abs(piece->end - piece->start - width) / width);
        score.areaErrors.push_back(
            std::abs(area(trace.noiseless, *piece) / area(trace.noiseless, truth) - 1.0));
    }
    const auto falseCount =
        static_cast<int>(std::count(apexesOfPiece.begin(), apexesOfPiece.end(), 0));
    score.falseCount += falseCount;
    score.rightTraceCount += isRight && falseCount == 0 ? 1 : 0;
}

std::vector<Scene> scenes()
{
    const auto alone = [](double height, double sigma, double tau) {
        return std::vector<TruePeak>{{300.0, height, sigma, tau}};
    };
    const auto pair = [](double distance, double second) {
        return std::vector<TruePeak>{{300.0, 20.0, 5.0, 0.0}, {300.0 + distance, second, 5.0, 0.0}};
    };
    std::vector<TruePeak> many;
    for (int i = 0; i < 10; ++i) {
        many.push_back({500.0 + 1000.0 * i, 20.0 + 10.0 * i, 5.0 + i, 2.0 * i});
    }
    return {
        {"noise alone", 600, {}},
        {"Gaussian, S/N 5", 600, alone(5, 5, 0)},
        {"Gaussian, S/N 10", 600, alone(10, 5, 0)},
        {"Gaussian, S/N 20", 600, alone(20, 5, 0)},
        {"Gaussian, S/N 100", 600, alone(100, 5, 0)},
        {"tail of 3 sigma, S/N 10", 600, alone(10, 5, 15)},
        {"tail of 3 sigma, S/N 100", 600, alone(100, 5, 15)},
        {"rising baseline, S/N 20", 600, alone(20, 5, 0), 40.0},
        {"a tenth missing, S/N 20", 600, alone(20, 5, 0), 0.0, 0.1},
        {"five points, S/N 20", 600, alone(20, 0.9, 0)},
        {"10,000 points, ten peaks", 10'000, many},
        {"pair, 3 sigma apart", 600, pair(15, 20)},
        {"pair, 1.5 FWHM apart", 600, pair(17.66, 20)},
        {"pair, 6 sigma, 1 : 0.3", 600, pair(30, 6)},
        {"shoulder, 2 sigma, 1 : 0.4", 600, pair(10, 8)},
    };
}

} // namespace

int main(int argc, char** argv)
{
    const int traceCount = argc > 1 ? std::atoi(argv[1]) : 500;
    std::printf("%-28s %-12s %9s %9s %9s %9s %9s\n",
                "trace",
                "by",
                "right %",
                "found %",
                "false",
                "width",
                "area");
    for (const Scene& scene : scenes()) {
        static constexpr const char* kMethods[] = {"mode 0", "mode 1", "mode 2", "2nd deriv."};
        Score scores[4];
        std::mt19937_64 random(17);
        for (int i = 0; i < traceCount; ++i) {
            const Trace trace = render(scene, random);
            for (int mode = 0; mode < 3; ++mode) {
                judge(scene, trace, byIntegrator(scene, trace, mode), scores[mode]);
            }
            judge(scene, trace, bySecondDerivative(trace), scores[3]);
        }
        for (int method = 0; method < 4; ++method) {
            const Score& score = scores[method];
            std::printf("%-28s %-12s %9.1f %9.1f %9.2f %9.3f %9.3f\n",
                        scene.name,
                        kMethods[method],
                        100.0 * score.rightTraceCount / traceCount,
                        score.peakCount > 0 ? 100.0 * score.foundCount / score.peakCount : 0.0,
                        static_cast<double>(score.falseCount) / traceCount,
                        MathUtils::median(score.widthErrors),
                        MathUtils::median(score.areaErrors));
        }
    }
    return 0;
}
