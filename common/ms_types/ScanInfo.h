#pragma once

#include "common/ms_types/ClosedMultiInterval.h"
#include "common/ms_types/MsDataTypes.h"
#include "common/ms_types/MsScanId.h"

#include <QString>

#include <optional>

namespace zel::msreader {

/// What can be known about a scan without reading its peaks.
struct ScanInfoBasic
{
    MsScanId scanId;
    double retentionTimeMinutes = 0.0;
};

/// The sign of the ions of a scan.
enum class Polarity { Unknown, Positive, Negative };

/// The full description of a scan.
class ScanInfo
{
public:
    MsScanId scanId;
    double retentionTimeMinutes = 0.0;
    int msLevel = 1;
    /// The form in which the scan is stored.
    PeakPickingFilter storedAs = PeakPickingFilter::Centroid;
    /// The scan number that the file itself gives; 0 when it gives none. `scanId` need not be it.
    long long nativeScanNumber = 0;
    /// The file's own identifier of the scan, for display.
    QString nativeId;
    /// The acquired m/z range as stored; use mzRange().
    math::ClosedMultiInterval<double, 10> acquiredMzRange;
    /// Ion mobility of the scan in the file's own unit (1/K0 in V s/cm2, or drift time in ms), 0
    /// included; nothing without mobility.
    std::optional<double> mobility;
    Polarity polarity = Polarity::Unknown;
    /// Compensation voltage of a FAIMS device, V; nothing without one.
    std::optional<double> compensationVoltage;

    /// The acquired m/z range; the empty set when the source does not know it.
    math::ClosedMultiInterval<double, 10> mzRange() const { return acquiredMzRange; }
};

/// The precursor of a fragment spectrum. All zero where a scan has none.
struct PrecursorInfo
{
    double isolationMz = 0.0;          ///< centre of the isolation window, m/z
    double isolationLowerOffset = 0.0; ///< half width of the window below the centre, m/z
    double isolationUpperOffset = 0.0; ///< half width of the window above the centre, m/z
    double selectedIonMz = 0.0;        ///< m/z of the ion that was chosen; 0 when unknown
    int charge = 0;                    ///< its charge; 0 when unknown
};

/// The identity of a source.
class DataSourceInformation
{
public:
    /// Path of the source file: used for progress titles, in cache keys and in feature stores.
    QString filePath;

    DataSourceInformation() = default;
    explicit DataSourceInformation(const QString& path)
        : filePath(path)
    {}

    /// For log lines.
    virtual QString description() const { return filePath; }
};

} // namespace zel::msreader
