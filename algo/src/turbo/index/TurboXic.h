#pragma once

#include "common/ms_types/TurboXicSettings.h"
#include "common/ms_types/XicDimensions.h"
#include "common/stable/Export.h"
#include "common/stable/Progress.h"
#include "common/stable/Result.h"

#include <QList>
#include <QMap>
#include <QPointF>
#include <QSharedPointer>
#include <QVariant>
#include <QVersionNumber>

#include <memory>

namespace zel {

namespace msreader {
class MsDataSourceInterface;
} // namespace msreader

/// An index in memory of the MS1 peaks of a data source, from which any number of extracted ion
/// chromatograms (XICs) are cut without reading the source again.
///
/// The peaks lie in a sparse matrix: rows are m/z bins, `granularity` to the unit, columns are the
/// MS1 scans in ascending time. m/z is therefore rounded to the nearest bin. An XIC costs a look at
/// about 16 peaks of each of its scans, plus the peaks inside its window; how many there are
/// elsewhere in the m/z range does not matter.
///
/// Memory: 12 bytes a peak, and a quarter of a byte for the directory that each look starts from.
/// While the index is built, room for `maxIonCount` peaks a scan is reserved.
///
/// An object is initialized once, by `init` or `load`, on one thread. After that it is only read,
/// and retrieval is safe from several threads at once.
class ZEL_EXPORT TurboXic
{
public:
    /// With the default settings.
    TurboXic();
    explicit TurboXic(const TurboXicSettings& settings);
    ~TurboXic();
    Q_DISABLE_COPY_MOVE(TurboXic)

    /// Reads all MS1 scans of the source, in chunks of 250, and builds the index. Of each scan the
    /// `maxIonCount` most intense peaks are kept; of peaks in one bin the one of highest m/z stays.
    /// Peaks without a bin below `maxMz` are left out. On an initialized object it does nothing.
    /// \param source           borrowed for the call
    /// \param dataFingerprint  a text that stands for the data, kept beside the index
    /// \param progress         one step a chunk; may be null. The build cannot be canceled
    /// \return the failure of the source; kError when a setting is 0, without MS1 scans, without a
    ///         single peak, or when memory runs out. The object is then still not initialized. On
    ///         success a warning counts the peaks that gave way to one in the same bin
    Error init(msreader::MsDataSourceInterface* source,
               const QString& dataFingerprint,
               QSharedPointer<ProgressBarInterface> progress);

    /// True once `init` or `load` has succeeded.
    bool isInitialized() const;
    /// True when the index has at least two bins and two scans; retrieval needs no more.
    bool isValid() const;
    /// The number of MS1 scans.
    int scanCount() const;
    QString dataFingerprint() const;

    /// The XIC of a box: one point (minutes, sum of the intensities in the m/z window, rounded to
    /// single precision) for each scan in the time window; 0 for a scan without a peak there. Of
    /// sets of several pieces only the overall lowest and highest ends count. m/z counts from the
    /// first to the last bin that lies inside the window, widened by 1e-10; times from the first to
    /// the last scan inside the window, widened by 1e-6 minutes. A window beyond the first or last
    /// scan gives that scan.
    ///
    /// With `preGuavaCompatible`, and unless the time is unbounded, the bins start with the one
    /// nearest to the window's start and are 1 more than the bins in the summed length of its
    /// pieces; a window that ends beyond the index takes all bins from its start. The scans run
    /// from the one nearest to the start to the one nearest to the end, never the last scan.
    /// \return an empty list when either set is empty; kError when the index is not valid
    Result<QList<QPointF>> retrieveXic(const XicDimensions& dimensions) const;

    /// The peaks stored of a scan, as (m/z of the bin, intensity), ascending in m/z.
    /// \return kError for an index outside 0 .. scanCount() - 1, as scanTime does
    Result<QList<QPointF>> retrieveScanData(int scanIndex) const;

    /// The retention time of a scan, minutes.
    Result<double> scanTime(int scanIndex) const;

    /// The first scan whose time is not below `time`.
    /// \return kBadParameterError when there is none
    Result<int> findScanIndex(double time) const;

    /// True when both hold the same scan times and the same peaks. Settings and fingerprint do not
    /// count.
    bool compare(const TurboXic& other) const;

    /// Writes the index to a cache file, in the format of docs/file-formats.md. The file is
    /// replaced as a whole or left as it was; missing folders are made. \return kFileOpenError when
    /// the folder or the file cannot be made, kError when writing fails or memory runs out: the
    /// bytes are put together before the file is touched, so that its size is needed once more
    Error save(const QString& path) const;

    /// Takes the index of a cache file. The file is read completely before anything is believed:
    /// whatever is wrong with it, the object stays as it was.
    /// \return kFileFormatError: "Invalid header" when it is no cache file or cannot be read,
    ///         "Invalid version", "MSReader options does not match" when it was made with other
    ///         settings (`preGuavaCompatible` apart), or "Invalid file format", also for times and
    ///         intensities that are not finite; kError when memory runs out
    Error load(const QString& path);
    Error load(const QByteArray& bytes);

    /// Whether the file has the header of a cache with this object's settings. Its body is not
    /// read.
    bool isValidCacheFile(const QString& path) const;

    /// What the header of a cache file says, whatever its settings: "Version" (text), "DateTime"
    /// (QDateTime), "Options" (a map of "Granularity", "MaxMz", "MaxIonCount", "PeakPickingFilter")
    /// and "DataFingerprint". \return kFileOpenError, or kFileFormatError as `load` gives it
    static Result<QMap<QString, QVariant>> loadHeader(const QString& path);

    /// What the name of a cache file ends with.
    static QString extension();
    /// The version of the cache file's format.
    static QVersionNumber version();
    /// The end of a file name by which TurboXicLoader knows that a file is a cache, which it may
    /// remove.
    static QString cacheIdentifier();

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace zel
