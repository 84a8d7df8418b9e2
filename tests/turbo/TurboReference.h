#pragma once

#include "common/ms_types/TurboXicSettings.h"
#include "common/ms_types/XicDimensions.h"

#include <QList>
#include <QPointF>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

namespace zel::test {

/// A spectrum of about `peakCount` peaks between two m/z values; whole intensities, some equal.
inline QList<QPointF> randomPeaks(std::mt19937& random, int peakCount, double mzStart, double mzEnd)
{
    std::uniform_real_distribution<double> mz(mzStart, mzEnd);
    std::uniform_int_distribution<int> intensity(0, 500);
    QList<QPointF> peaks;
    for (int i = 0; i < peakCount; ++i) {
        const double peakMz = mz(random);
        peaks.append(QPointF(peakMz, intensity(random)));
    }
    std::stable_sort(peaks.begin(), peaks.end(), [](const QPointF& a, const QPointF& b) {
        return a.x() < b.x();
    });
    return peaks;
}

/// What an index keeps of a spectrum, by m/z bin: told directly.
inline std::map<int, double> indexedPeaks(QList<QPointF> spectrum, const TurboXicSettings& settings)
{
    QList<QPointF> ranked = spectrum;
    std::stable_sort(ranked.begin(), ranked.end(), [](const QPointF& a, const QPointF& b) {
        return a.y() > b.y();
    });
    ranked.resize(std::min<qsizetype>(ranked.size(), settings.maxIonCount));
    std::map<int, double> peaks;
    for (const QPointF& peak : spectrum) {
        if (ranked.removeOne(peak)) {
            peaks[static_cast<int>(std::floor(peak.x() * settings.granularity + 0.5))] = peak.y();
        }
    }
    return peaks;
}

} // namespace zel::test
