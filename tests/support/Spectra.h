#pragma once

#include "tools/sources/InMemoryScan.h"

namespace zel::test {

/// A centroid scan of these points.
inline msreader::InMemoryScan scanOf(const msreader::MsScanId& id,
                                     double minutes,
                                     const QList<QPointF>& points,
                                     int msLevel = 1)
{
    msreader::InMemoryScan scan;
    scan.info.scanId = id;
    scan.info.retentionTimeMinutes = minutes;
    scan.info.msLevel = msLevel;
    scan.points = points;
    return scan;
}

} // namespace zel::test
