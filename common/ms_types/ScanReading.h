#pragma once

#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Export.h"

namespace zel::msreader {

// Reading of many scans, one chunk after the other.

/// How many scans are asked of a source at once.
inline constexpr qsizetype kScansPerChunk = 250;

/// Into how many chunks this many scans are cut.
constexpr int chunkCount(qsizetype scanCount)
{
    return static_cast<int>((scanCount + kScansPerChunk - 1) / kScansPerChunk);
}

/// The spectra of the scans [first, end), in their order.
/// \return kError when the source gives fewer or more spectra than asked for, or its failure
ZEL_EXPORT Result<QList<QList<QPointF>>> readScans(MsDataSourceInterface* source,
                                                   const QList<ScanInfoBasic>& scans,
                                                   qsizetype first,
                                                   qsizetype end,
                                                   PeakPickingFilter filter);

} // namespace zel::msreader
