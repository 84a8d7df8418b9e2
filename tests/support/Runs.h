#pragma once

#include "tests/support/Matchers.h"
#include "tools/sources/InMemoryDataSource.h"

namespace zel::test {

/// One scan of an in-memory run.
inline msreader::InMemoryScan scanOf(long long d1, double minutes, const QList<QPointF>& points, int msLevel = 1)
{
    msreader::InMemoryScan scan;
    scan.info.scanId = msreader::MsScanId(d1);
    scan.info.retentionTimeMinutes = minutes;
    scan.info.msLevel = msLevel;
    scan.points = points;
    return scan;
}

inline QSharedPointer<msreader::InMemoryDataSource> sourceOf(const QList<msreader::InMemoryScan>& scans)
{
    return valueOf(msreader::InMemoryDataSource::create(scans, QStringLiteral("test run")));
}

/// An MS1 run of scans with these times, all with the same points.
inline QSharedPointer<msreader::InMemoryDataSource> runOf(const QList<double>& minutes, const QList<QPointF>& points)
{
    QList<msreader::InMemoryScan> scans;
    for (qsizetype i = 0; i < minutes.size(); ++i) {
        scans.append(scanOf(i + 1, minutes[i], points));
    }
    return sourceOf(scans);
}

} // namespace zel::test
