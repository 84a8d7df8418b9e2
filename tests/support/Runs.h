#pragma once

#include "tests/support/Matchers.h"
#include "tests/support/Spectra.h"
#include "tools/sources/memory/InMemoryDataSource.h"

namespace zel::test {

inline QSharedPointer<msreader::InMemoryDataSource> sourceOf(
    const QList<msreader::InMemoryScan>& scans)
{
    return valueOf(msreader::InMemoryDataSource::create(scans, QStringLiteral("test run")));
}

/// An MS1 run of scans with these times, all with the same points.
inline QSharedPointer<msreader::InMemoryDataSource> runOf(const QList<double>& minutes,
                                                          const QList<QPointF>& points)
{
    QList<msreader::InMemoryScan> scans;
    for (qsizetype i = 0; i < minutes.size(); ++i) {
        scans.append(scanOf(i + 1, minutes[i], points));
    }
    return sourceOf(scans);
}

} // namespace zel::test
