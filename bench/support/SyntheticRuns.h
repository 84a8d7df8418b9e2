#pragma once

#include "common/ms_types/XicDimensions.h"
#include "tools/sources/memory/InMemoryDataSource.h"

#include <QList>

#include <random>

namespace zel::bench {

/// MS1 scans at even times over `minutes`, each with `peakCount` random centroids between m/z 400
/// and 1200.
inline QList<msreader::InMemoryScan> randomScans(int scanCount, int peakCount, double minutes)
{
    std::mt19937_64 random(42);
    std::uniform_real_distribution<double> mz(400.0, 1200.0);
    std::exponential_distribution<double> intensity(1e-4);
    QList<msreader::InMemoryScan> scans;
    scans.reserve(scanCount);
    for (int i = 0; i < scanCount; ++i) {
        msreader::InMemoryScan scan;
        scan.info.scanId = msreader::MsScanId(i + 1);
        scan.info.retentionTimeMinutes = minutes * i / scanCount;
        for (int peak = 0; peak < peakCount; ++peak) {
            scan.points.append(QPointF(mz(random), intensity(random)));
        }
        std::sort(scan.points.begin(), scan.points.end(), [](const QPointF& a, const QPointF& b) {
            return a.x() < b.x();
        });
        scans.append(scan);
    }
    return scans;
}

/// Windows of 20 ppm and the given length at random places of a run of `runMinutes`.
inline QList<XicDimensions> randomWindows(int count, double lengthMinutes, double runMinutes)
{
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> mz(400.0, 1200.0);
    std::uniform_real_distribution<double> start(0.0, runMinutes - lengthMinutes);
    QList<XicDimensions> windows;
    windows.reserve(count);
    for (int i = 0; i < count; ++i) {
        const double centre = mz(random);
        const double begin = start(random);
        windows.append(XicDimensions({centre * (1 - 10e-6), centre * (1 + 10e-6)},
                                     {begin, begin + lengthMinutes}));
    }
    return windows;
}

} // namespace zel::bench
