#include "tools/simulate/ScanRenderer.h"

#include "common/stable/SharedNumbers.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zel::simulate {

namespace {

/// m/z at which the resolving power of an Orbitrap is stated.
constexpr double kOrbitrapReferenceMz = 200.0;

/// Standard deviation of a Gaussian of full width at half maximum 1.
const double kSigmaPerFwhm = 1.0 / (2.0 * std::sqrt(2.0 * std::numbers::ln2));

/// How far a profile peak is drawn, in standard deviations; 6e-7 of it lies outside.
constexpr double kProfileSigmas = 5.0;

void sortByMz(std::vector<Signal>& signals)
{
    const auto lower = [](const Signal& a, const Signal& b) {
        return a.mz != b.mz ? a.mz < b.mz : a.intensity < b.intensity;
    };
    if (!std::ranges::is_sorted(signals, lower)) { // noise seldom changes the order
        std::ranges::sort(signals, lower);
    }
}

} // namespace

ScanRenderer::ScanRenderer(const SimulationSettings& settings)
    : m_settings(settings)
{}

QList<QPointF> ScanRenderer::render(std::vector<Signal>& signals, RandomStream& random) const
{
    sortByMz(signals);
    std::vector<Signal> points;
    if (m_settings.scanKind == msreader::PeakPickingFilter::Centroid) {
        mergeUnresolved(signals);
        addPeakNoise(signals, random);
        points = std::move(signals);
    } else {
        addPeakNoise(signals, random);
        points = profileOf(signals);
    }
    addCountingNoise(points, random);
    return recorded(points);
}

double ScanRenderer::fwhm(double mz) const
{
    const double width = mz / m_settings.resolvingPower;
    return m_settings.resolutionModel == ResolutionModel::Orbitrap
               ? width * std::sqrt(mz / kOrbitrapReferenceMz)
               : width;
}

/// Joins each peak to the one before it when the two are closer than their width, at the mean m/z
/// weighted by intensity.
void ScanRenderer::mergeUnresolved(std::vector<Signal>& signals) const
{
    if (signals.empty()) {
        return;
    }
    auto merged = signals.begin();
    for (auto next = signals.begin() + 1; next != signals.end(); ++next) {
        const double sum = merged->intensity + next->intensity;
        if (next->mz - merged->mz < fwhm(merged->mz) && sum > 0.0) {
            merged->mz += (next->mz - merged->mz) * (next->intensity / sum);
            merged->intensity = sum;
        } else {
            *++merged = *next;
        }
    }
    signals.erase(merged + 1, signals.end());
}

void ScanRenderer::addPeakNoise(std::vector<Signal>& peaks, RandomStream& random) const
{
    const double relativeMzNoise = m_settings.mzNoisePpm * kPartsPerMillion;
    for (Signal& peak : peaks) {
        if (relativeMzNoise > 0.0) {
            peak.mz *= 1.0 + relativeMzNoise * random.normal();
        }
        if (m_settings.intensityNoise > 0.0) {
            peak.intensity *= std::exp(m_settings.intensityNoise * random.normal());
        }
    }
    sortByMz(peaks);
}

/// Gaussian peaks on a grid that is the same for all scans and has `profilePointsPerFwhm` points in
/// a peak's width.
std::vector<Signal> ScanRenderer::profileOf(const std::vector<Signal>& peaks) const
{
    const double sigma = kSigmaPerFwhm * m_settings.profilePointsPerFwhm; // grid points
    const double height = std::numbers::inv_sqrtpi / (std::numbers::sqrt2 * sigma);
    std::vector<Signal> points; // mz holds the number of the grid point until the end
    for (const Signal& peak : peaks) {
        const double centre = gridPosition(peak.mz);
        const double first = std::ceil(centre - kProfileSigmas * sigma);
        const double last = std::floor(centre + kProfileSigmas * sigma);
        // As the peaks ascend, the points at `first` and after it are the last ones in the list,
        // without a gap.
        const double stored = points.empty() ? first - 1.0 : points.back().mz;
        auto index = points.size() - static_cast<std::size_t>(std::max(0.0, stored - first + 1.0));
        for (double position = first; position <= last; position += 1.0, ++index) {
            const double distance = (position - centre) / sigma;
            if (index == points.size()) {
                points.push_back({position, 0.0});
            }
            points[index].intensity +=
                peak.intensity * height * std::exp(-0.5 * distance * distance);
        }
    }
    for (Signal& point : points) {
        point.mz = gridMz(point.mz);
    }
    return points;
}

void ScanRenderer::addCountingNoise(std::vector<Signal>& points, RandomStream& random) const
{
    const double perIon = m_settings.intensityPerIon;
    if (!(perIon > 0.0)) {
        return;
    }
    for (Signal& point : points) {
        point.intensity = perIon * random.poisson(point.intensity / perIon);
    }
}

QList<QPointF> ScanRenderer::recorded(const std::vector<Signal>& points) const
{
    QList<QPointF> kept;
    kept.reserve(static_cast<qsizetype>(points.size()));
    for (const Signal& point : points) {
        if (point.intensity > 0.0 && point.intensity >= m_settings.minIntensity &&
            point.mz >= m_settings.mzStart && point.mz <= m_settings.mzEnd) {
            kept.append(QPointF(point.mz, point.intensity));
        }
    }
    return kept;
}

/// Rises by 1 from one grid point to the next: the integral of points per width over the width.
double ScanRenderer::gridPosition(double mz) const
{
    const double scale = m_settings.profilePointsPerFwhm * m_settings.resolvingPower;
    return m_settings.resolutionModel == ResolutionModel::Orbitrap
               ? -2.0 * scale * std::sqrt(kOrbitrapReferenceMz / mz)
               : scale * std::log(mz);
}

double ScanRenderer::gridMz(double position) const
{
    const double scale = m_settings.profilePointsPerFwhm * m_settings.resolvingPower;
    if (m_settings.resolutionModel == ResolutionModel::Orbitrap) {
        const double root = -2.0 * scale / position;
        return kOrbitrapReferenceMz * root * root;
    }
    return std::exp(position / scale);
}

} // namespace zel::simulate
