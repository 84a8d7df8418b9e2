#pragma once

#include "common/ms_types/ScanInfo.h"

#include <QList>
#include <QPointF>

namespace zel::msreader {

/// One scan held in memory, the common coin of simulator, writer and in-memory source.
struct InMemoryScan
{
    /// `info.scanId` has `d1`, and `d2` where the run has mobility; `info.storedAs` says the kind
    /// of the points.
    ScanInfo info;
    /// All zero for MS1 scans.
    PrecursorInfo precursor;
    /// (m/z, intensity), ascending in m/z.
    QList<QPointF> points;
};

} // namespace zel::msreader
