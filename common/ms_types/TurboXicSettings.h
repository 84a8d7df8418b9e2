#pragma once

#include "common/ms_types/MsDataTypes.h"
#include "common/stable/Export.h"

class QDataStream;
class QString;

namespace zel {

class StringifierState;

/// How an index of peaks by m/z bin is built.
struct ZEL_EXPORT TurboXicSettings
{
    /// Bins per unit of m/z. More bins keep m/z finer; the peaks of a scan that share a bin become
    /// one.
    int granularity = 10000;
    /// Upper m/z of the index; peaks at or beyond it are left out.
    int maxMz = 3010;
    /// Most peaks kept from one scan, those of highest intensity.
    int maxIonCount = 1000;
    /// The form in which scans are read.
    msreader::PeakPickingFilter peakPickingFilter = msreader::PeakPickingFilter::Centroid;
    /// Selects the older retrieval, which counts m/z bins from the window's start and takes whole
    /// scans nearest to the window's times.
    bool preGuavaCompatible = false;

    friend bool operator==(const TurboXicSettings&, const TurboXicSettings&) = default;
};

/// The fields in order: three 32-bit integers, one byte for the filter, one for the flag. Reading
/// from a stream that ends early or fails leaves the settings unchanged.
ZEL_EXPORT QDataStream& operator<<(QDataStream& stream, const TurboXicSettings& settings);
ZEL_EXPORT QDataStream& operator>>(QDataStream& stream, TurboXicSettings& settings);

/// One line a field, "name:value", the filter by its name.
ZEL_EXPORT QString stringify(const TurboXicSettings& settings, const StringifierState& state);

} // namespace zel
