#pragma once

#include "tools/sources/IndexedDataSource.h"
#include "tools/sources/mzml/SpectrumRun.h"

#include <QSharedPointer>
#include <QStringList>

#include <memory>

namespace zel::msreader {

/// The data source over an mzML or mzXML file, plain or gzip-compressed, through ProteoWizard's
/// libpwiz. See IndexedDataSource for what it does beyond the contract, and readRun for how spectra
/// become scans and frames.
///
/// Opening reads the headers of all spectra; points are read when they are asked for, and none are
/// kept but those of the last frame with a mobility array, of which one mobility scan after the
/// other is asked for. So the memory in use does not grow with the run but for its index, some
/// hundred bytes a spectrum.
///
/// Times are in minutes whatever the file's unit. `scanInfo` gives the file's own scan number and
/// native id. Mobilities are 1/K0 in V s/cm2 or drift times in ms, as the file has them.
///
/// Frames with a mobility array ("combined" frames) have one mobility scan for each number of the
/// run's MobilityAxis from the lowest to the highest of the frame; those without a point are empty.
/// The axis takes one pass over all such frames, on the first need: `d2Range`, a query with
/// `setD2`, an id with `d2`.
///
/// What is wrong with a file is reported by a kFileFormatError that names the file and the
/// spectrum: on opening, what concerns the file as a whole, or headers; on reading, points that
/// cannot be decoded or are not valid numbers. Repaired with a warning are times that descend, and
/// in silence are spectra that are not sorted by m/z, and points (0, 0) that fill up empty spectra.
///
/// Not thread-safe.
class MzmlDataSource : public IndexedDataSource
{
public:
    /// \param selection  the scans that the source has; the others are as if they were not there
    /// \return kFileOpenError, kFileFormatError, or kBadParameterError when no scan is selected
    static Result<QSharedPointer<MzmlDataSource>> open(const QString& path,
                                                       const RunSelection& selection = {});
    ~MzmlDataSource() override;

    /// What was repaired, in lines for the user that name the file; empty for most files.
    const QStringList& warnings() const { return m_warnings; }

    /// What the scans of a level differ in.
    ScanKinds scanKinds(int msLevel) const { return kindsOf(index().records(), msLevel); }

    Result<ScanInfo> scanInfo(const MsScanId& id) override;

    /// The points of the largest frame of an MS level, all its mobility scans together, as the file
    /// announces them; 0 without a frame. Nothing is read.
    qsizetype largestPointCount(int msLevel) const;

protected:
    Result<QList<QPointF>> readRecord(qsizetype recordIndex) override;
    bool hasCombinedFrames() const override;
    Result<D2Range> combinedScans(qsizetype recordIndex) override;
    Result<QList<QPointF>> readCombinedScan(qsizetype recordIndex, long long d2) override;
    Result<double> combinedMobility(long long d2) override;

private:
    /// The mobility scans of the combined frame that was read last.
    struct CombinedFrame
    {
        qsizetype recordIndex = -1;
        D2Range scans;
        std::vector<qsizetype> scanStarts; ///< into points, for each scan and after the last
        QList<QPointF> points;             ///< by scan, and by m/z inside a scan
    };

    MzmlDataSource(std::unique_ptr<SpectrumFile> file, SpectrumRun run);

    bool isCombined(qsizetype recordIndex) const;
    Error buildAxis();
    Error readCombinedFrame(qsizetype recordIndex);

    std::unique_ptr<SpectrumFile> m_file;
    std::vector<StoredSpectrum> m_stored;
    std::vector<int> m_combinedLevels;
    QStringList m_warnings;
    bool m_hasAxis = false;
    MobilityAxis m_axis;
    std::vector<double> m_mobilities;     ///< buffer
    std::vector<D2Range> m_combinedScans; ///< parallel to the records, once there is the axis
    CombinedFrame m_frame;
};

} // namespace zel::msreader
