#pragma once

#include "common/stable/Error.h"
#include "common/stable/Progress.h"
#include "tools/sources/InMemoryScan.h"

namespace zel::msreader {

/// How a run becomes an mzML file.
struct MzmlWriterOptions
{
    /// How the mobility scans of a frame are written.
    enum class Frames {
        Combined,   ///< one spectrum a frame, scan after scan, with a mobility for each point
        ScanByScan, ///< one spectrum a mobility scan
    };
    /// What the mobilities are.
    enum class Mobility {
        InverseReduced, ///< 1/K0 in V s/cm2
        DriftTime,      ///< ms
    };

    Frames frames = Frames::Combined;
    Mobility mobility = Mobility::InverseReduced;
};

/// Writes scans as an mzML file with an index, through ProteoWizard's libpwiz; as a gzip file when
/// the path ends in ".gz". m/z, intensities, mobilities and times are read back bit for bit.
///
/// The file has the scans in the order given; a reader numbers them itself (see MzmlDataSource). A
/// scan without a native id gets "scan=N", counted from 1. Of frames written in one spectrum, the
/// empty mobility scans are lost, and the native id and the acquired m/z range are those of the
/// first scan. The file is replaced as a whole or left as it was.
///
/// \param scans     as InMemoryDataSource takes them; mobility scans have an
///                  `info.mobility`, in ascending order inside a frame
/// \param progress  one step a hundred spectra; may be null
/// \return kBadParameterError for scans that are not as they should be, kFileOpenError when the
///         file cannot be made, kError when it cannot be written to its end,
///         kOperationCanceledError
Error writeMzml(const QString& path,
                const QList<InMemoryScan>& scans,
                const MzmlWriterOptions& options = {},
                const QSharedPointer<ProgressBarInterface>& progress = {});

} // namespace zel::msreader
