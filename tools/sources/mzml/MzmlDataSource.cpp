#include "tools/sources/mzml/MzmlDataSource.h"

#include "tools/sources/SpectrumUtils.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace zel::msreader {

Result<QSharedPointer<MzmlDataSource>> MzmlDataSource::open(const QString& path,
                                                            const RunSelection& selection)
{
    ZEL_ASSIGN_OR_RETURN(std::unique_ptr<SpectrumFile> file, SpectrumFile::open(path));
    ZEL_ASSIGN_OR_RETURN(SpectrumRun run, readRun(*file, selection));
    return QSharedPointer<MzmlDataSource>(new MzmlDataSource(std::move(file), std::move(run)));
}

MzmlDataSource::MzmlDataSource(std::unique_ptr<SpectrumFile> file, SpectrumRun run)
    : IndexedDataSource(std::move(run.index), file->path())
    , m_file(std::move(file))
    , m_stored(std::move(run.stored))
    , m_combinedLevels(std::move(run.combinedLevels))
{
    if (run.outOfOrderCount > 0) {
        m_warnings.append(
            m_file->path() +
            QStringLiteral(": %1 of %2 spectra stand out of order; they are read in order of time")
                .arg(run.outOfOrderCount)
                .arg(m_stored.size()));
    }
}

MzmlDataSource::~MzmlDataSource() = default;

Result<ScanInfo> MzmlDataSource::scanInfo(const MsScanId& id)
{
    ZEL_ASSIGN_OR_RETURN(ScanInfo info, IndexedDataSource::scanInfo(id));
    const ScanIndex::Frame& frame = *index().frameOf(*id.d1);
    const qsizetype record =
        id.d2 ? index().mobilityScanOf(frame, *id.d2).value_or(frame.first) : frame.first;
    // libpwiz keeps the native ids, so that the index need not.
    info.nativeId = m_file->nativeId(m_stored[static_cast<std::size_t>(record)].index);
    return info;
}

qsizetype MzmlDataSource::largestPointCount(int msLevel) const
{
    qsizetype largest = 0;
    for (const ScanIndex::Frame& frame : index().frames()) {
        qsizetype pointCount = 0;
        for (qsizetype i = frame.first; i < frame.first + frame.count; ++i) {
            const qsizetype announced = m_stored[static_cast<std::size_t>(i)].pointCount;
            pointCount += std::clamp<qsizetype>(announced, 0, std::numeric_limits<int>::max());
        }
        if (index().record(frame.first).info.msLevel == msLevel) {
            largest = std::max(largest, pointCount);
        }
    }
    return largest;
}

Result<QList<QPointF>> MzmlDataSource::readRecord(qsizetype recordIndex)
{
    ZEL_ASSIGN_OR_RETURN(QList<QPointF> points,
                         readPoints(*m_file, m_stored[static_cast<std::size_t>(recordIndex)]));
    if (isCombined(recordIndex)) {
        joinEqualMz(points);
    }
    return points;
}

bool MzmlDataSource::hasCombinedFrames() const
{
    return !m_combinedLevels.empty();
}

Result<IndexedDataSource::D2Range> MzmlDataSource::combinedScans(qsizetype recordIndex)
{
    Error e;
    if (!isCombined(recordIndex)) {
        return D2Range();
    }
    ZEL_RETURN_IF_ERROR(buildAxis());
    return m_combinedScans[static_cast<std::size_t>(recordIndex)];
}

Result<QList<QPointF>> MzmlDataSource::readCombinedScan(qsizetype recordIndex, long long d2)
{
    Error e;
    ZEL_RETURN_IF_ERROR(buildAxis());
    ZEL_RETURN_IF_ERROR(readCombinedFrame(recordIndex));
    const auto scan = static_cast<std::size_t>(d2 - *m_frame.scans.minimum());
    const qsizetype start = m_frame.scanStarts[scan];
    return m_frame.points.sliced(start, m_frame.scanStarts[scan + 1] - start);
}

Result<double> MzmlDataSource::combinedMobility(long long d2)
{
    Error e;
    ZEL_RETURN_IF_ERROR(buildAxis());
    return m_axis.valueOf(d2);
}

bool MzmlDataSource::isCombined(qsizetype recordIndex) const
{
    return std::ranges::find(m_combinedLevels, index().record(recordIndex).info.msLevel) !=
           m_combinedLevels.end();
}

/// Numbers the mobilities of all combined frames, unless that was done before.
Error MzmlDataSource::buildAxis()
{
    if (m_hasAxis) {
        return kNoError;
    }
    MobilityAxis axis;
    std::vector<Interval<double>> extents(m_stored.size(), {1.0, 0.0}); // empty
    for (std::size_t i = 0; i < m_stored.size(); ++i) {
        if (!isCombined(static_cast<qsizetype>(i))) {
            continue;
        }
        ZEL_ASSIGN_OR_RETURN([[maybe_unused]] const QList<QPointF> points,
                             readPoints(*m_file, m_stored[i], m_mobilities));
        if (!m_mobilities.empty()) {
            axis.addFrame(m_mobilities);
            const auto [lowest, highest] = std::ranges::minmax(m_mobilities);
            extents[i] = {lowest, highest};
        }
    }
    axis.finish();
    m_combinedScans.resize(m_stored.size());
    for (std::size_t i = 0; i < m_stored.size(); ++i) {
        if (extents[i].start <= extents[i].end) {
            m_combinedScans[i] = {axis.indexOf(extents[i].start), axis.indexOf(extents[i].end)};
        }
    }
    m_axis = std::move(axis);
    m_hasAxis = true;
    return kNoError;
}

/// Cuts a frame into its mobility scans, unless it was the last one to be cut.
Error MzmlDataSource::readCombinedFrame(qsizetype recordIndex)
{
    if (m_frame.recordIndex == recordIndex) {
        return kNoError;
    }
    m_frame = {};
    const auto record = static_cast<std::size_t>(recordIndex);
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> points,
                         readPoints(*m_file, m_stored[record], m_mobilities));
    CombinedFrame frame;
    frame.recordIndex = recordIndex;
    frame.scans = m_combinedScans[record];

    const long long firstScan = *frame.scans.minimum();
    const auto scanCount = static_cast<std::size_t>(*frame.scans.maximum() - firstScan + 1);
    std::vector<std::size_t> scanOfPoint(m_mobilities.size());
    frame.scanStarts.assign(scanCount + 1, 0);
    for (std::size_t i = 0; i < m_mobilities.size(); ++i) {
        const bool isRepeated = i > 0 && m_mobilities[i] == m_mobilities[i - 1];
        scanOfPoint[i] =
            isRepeated ? scanOfPoint[i - 1]
                       : static_cast<std::size_t>(m_axis.indexOf(m_mobilities[i]) - firstScan);
        ++frame.scanStarts[scanOfPoint[i] + 1];
    }
    std::partial_sum(frame.scanStarts.begin(), frame.scanStarts.end(), frame.scanStarts.begin());

    frame.points.resize(points.size());
    std::vector<qsizetype> places = frame.scanStarts;
    for (std::size_t i = 0; i < scanOfPoint.size(); ++i) {
        frame.points[places[scanOfPoint[i]]++] = points[static_cast<qsizetype>(i)];
    }
    for (std::size_t scan = 0; scan < scanCount; ++scan) {
        std::stable_sort(frame.points.begin() + frame.scanStarts[scan],
                         frame.points.begin() + frame.scanStarts[scan + 1],
                         [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); });
    }
    m_frame = std::move(frame);
    return kNoError;
}

} // namespace zel::msreader
