#pragma once

#include "common/ms_types/ScanInfo.h"

namespace pwiz::msdata {
struct Spectrum;
}

namespace zel::msreader {

/// What a file says of a spectrum, without its points.
struct SpectrumHeader
{
    /// Without `scanId`, which is for the reader of the whole run to give, and without `nativeId`.
    ScanInfo info;
    PrecursorInfo precursor;
    /// False for other things than mass spectra, such as those of a UV detector.
    bool isMassSpectrum = true;
    /// Whether `info.storedAs` stands in the file.
    bool isKindStated = false;
    qsizetype pointCount = 0;
};

/// The same of a spectrum of libpwiz. The MS level is 0 where none is stated, the time NaN without
/// a known unit; a window without a centre is centred on the selected ion.
SpectrumHeader headerOf(const pwiz::msdata::Spectrum& spectrum);

/// The scan number in a native id such as "controllerType=0 controllerNumber=1 scan=12", or 0.
long long scanNumberOf(const QString& nativeId);

} // namespace zel::msreader
