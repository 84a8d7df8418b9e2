#include "BulkXicExtractor.h"

#include "common/ms_types/ScanReading.h"
#include "common/stable/Logging.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <new>
#include <span>
#include <vector>

namespace zel {

using msreader::MsQuery;
using msreader::PeakPickingFilter;
using msreader::ScanInfoBasic;

namespace {

using MzSet = math::ClosedMultiInterval<double, 10>;
using TimeSet = math::ClosedMultiInterval<double, 6>;

/// What a peak may lie outside the m/z window, in Th, so that rounding of the window's ends loses
/// none.
constexpr double kMzEdgeTolerance = 1e-10;

TimeSet unionOfTimes(const QList<XicDimensions>& dimensions)
{
    return TimeSet::unionOf(dimensions, &XicDimensions::timeInterval);
}

QList<MzSet> expandedMzSets(const QList<XicDimensions>& dimensions)
{
    QList<MzSet> expanded;
    expanded.reserve(dimensions.size());
    for (const XicDimensions& box : dimensions) {
        expanded.append(box.mzInterval());
        expanded.last().grow(kMzEdgeTolerance);
    }
    return expanded;
}

/// Consecutive scans, both ends included, that one XIC takes.
struct ScanRun
{
    qsizetype xicIndex;
    qsizetype firstScan;
    qsizetype lastScan;
};

/// Finds the scans of each XIC by bisection over the scan times, as runs of consecutive scans. A
/// scan belongs to an XIC exactly when TimeSet::contains says so, and to none when its time is NaN.
class ScanRunFinder
{
public:
    explicit ScanRunFinder(const QList<ScanInfoBasic>& scans)
    {
        const auto time = [&scans](qsizetype scan) { return scans[scan].retentionTimeMinutes; };
        m_scanByTime.reserve(static_cast<std::size_t>(scans.size()));
        for (qsizetype scan = 0; scan < scans.size(); ++scan) {
            if (!std::isnan(time(scan))) {
                m_scanByTime.push_back(scan);
            }
        }
        const bool isSorted = std::ranges::is_sorted(m_scanByTime, {}, time);
        m_isScanOrder = isSorted && std::ssize(m_scanByTime) == scans.size();
        if (!isSorted) {
            std::ranges::stable_sort(m_scanByTime, {}, time);
        }
        m_times.reserve(m_scanByTime.size());
        std::ranges::transform(m_scanByTime, std::back_inserter(m_times), time);
    }

    /// Appends the runs of one XIC.
    void appendRuns(qsizetype xicIndex, const TimeSet& timeSet, std::vector<ScanRun>& runs) const
    {
        qsizetype next = 0; // pieces are ascending; within the tolerance they may share scans
        for (const Interval<double>& piece : timeSet.intervals()) {
            const auto isBefore = [&piece](double time) {
                return time < piece.start - TimeSet::tolerance();
            };
            const auto isInside = [&piece](double time) {
                return time <= piece.end + TimeSet::tolerance();
            };
            const auto first =
                std::partition_point(m_times.begin() + next, m_times.end(), isBefore);
            const auto last = std::partition_point(first, m_times.end(), isInside);
            appendPositions(xicIndex, first - m_times.begin(), last - m_times.begin(), runs);
            next = last - m_times.begin();
        }
    }

private:
    /// Appends the scans at the positions [first, last) of the order by time.
    void appendPositions(qsizetype xicIndex,
                         qsizetype first,
                         qsizetype last,
                         std::vector<ScanRun>& runs) const
    {
        if (m_isScanOrder && first < last) {
            runs.push_back({xicIndex, first, last - 1});
            return;
        }
        for (qsizetype position = first; position < last; ++position) {
            const qsizetype scan = m_scanByTime[static_cast<std::size_t>(position)];
            runs.push_back({xicIndex, scan, scan});
        }
    }

    std::vector<qsizetype> m_scanByTime;
    std::vector<double> m_times;
    bool m_isScanOrder; ///< positions in the order by time are numbers of scans
};

/// All runs, by first scan and then by XIC.
std::vector<ScanRun> findScanRuns(const QList<XicDimensions>& dimensions,
                                  const QList<ScanInfoBasic>& scans)
{
    const ScanRunFinder finder(scans);
    std::vector<ScanRun> runs;
    runs.reserve(static_cast<std::size_t>(dimensions.size()));
    for (qsizetype i = 0; i < dimensions.size(); ++i) {
        finder.appendRuns(i, dimensions[i].timeInterval(), runs);
    }
    std::ranges::stable_sort(runs, {}, &ScanRun::firstScan);
    return runs;
}

/// Walks over the scans in order and knows the XICs that take the present one, in ascending order.
class XicsOfScan
{
public:
    explicit XicsOfScan(const std::vector<ScanRun>& runs)
        : m_next(runs.begin())
        , m_end(runs.end())
    {}

    /// Moves on to `scan`, which must be the one after the last.
    const std::vector<ScanRun>& advanceTo(qsizetype scan)
    {
        std::erase_if(m_active, [scan](const ScanRun& run) { return run.lastScan < scan; });
        const auto firstNew = std::find_if(
            m_next, m_end, [scan](const ScanRun& run) { return run.firstScan > scan; });
        if (firstNew != m_next) {
            const auto oldCount = static_cast<std::ptrdiff_t>(m_active.size());
            m_active.insert(m_active.end(), m_next, firstNew);
            std::ranges::inplace_merge(
                m_active, m_active.begin() + oldCount, {}, &ScanRun::xicIndex);
            m_next = firstNew;
        }
        return m_active;
    }

private:
    std::vector<ScanRun>::const_iterator m_next;
    std::vector<ScanRun>::const_iterator m_end;
    std::vector<ScanRun> m_active;
};

/// One list for each XIC, sized to its number of scans, that is filled from the front.
class XicWriter
{
public:
    XicWriter(qsizetype xicCount, const std::vector<ScanRun>& runs)
    {
        QList<qsizetype> pointCounts(xicCount, 0);
        for (const ScanRun& run : runs) {
            pointCounts[run.xicIndex] += run.lastScan - run.firstScan + 1;
        }
        m_xics.resize(xicCount);
        m_nextPoint.reserve(static_cast<std::size_t>(xicCount));
        for (qsizetype i = 0; i < xicCount; ++i) {
            m_xics[i].reserve(pointCounts[i]); // resize alone takes half as much again
            m_xics[i].resize(pointCounts[i]);
            m_nextPoint.push_back(m_xics[i].data());
        }
    }

    void append(qsizetype xicIndex, const QPointF& point)
    {
        *m_nextPoint[static_cast<std::size_t>(xicIndex)]++ = point;
    }

    QList<QList<QPointF>> takeXics() { return std::move(m_xics); }

private:
    QList<QList<QPointF>> m_xics;
    std::vector<QPointF*> m_nextPoint;
};

/// The sum of the intensities of the peaks inside the m/z set, in ascending m/z.
double sumInside(const QList<QPointF>& spectrum, const MzSet& mzSet)
{
    double sum = 0.0;
    for (const Interval<double>& window : mzSet.intervals()) {
        auto peak = std::ranges::lower_bound(spectrum, window.start, {}, &QPointF::x);
        for (; peak != spectrum.cend() && peak->x() <= window.end; ++peak) {
            sum += peak->y();
        }
    }
    return sum;
}

/// Merges the XICs of one group over the union of their times, which are compared exactly.
QList<QPointF> mergeGroup(int groupIndex,
                          std::span<const QList<QPointF>> members,
                          BulkXicExtractor::Aggregate aggregate)
{
    if (members.empty()) {
        return {};
    }
    if (members.size() == 1) {
        return members.front();
    }
    QList<QPointF> merged;
    merged.reserve(members.front().size());
    std::vector<qsizetype> positions(members.size(), 0);
    QList<double> values(static_cast<qsizetype>(members.size()), 0.0);
    for (;;) {
        const QPointF* earliest = nullptr;
        for (std::size_t i = 0; i < members.size(); ++i) {
            if (positions[i] < members[i].size()) {
                const QPointF& point = members[i][positions[i]];
                earliest = earliest == nullptr || point.x() < earliest->x() ? &point : earliest;
            }
        }
        if (earliest == nullptr) {
            return merged;
        }
        const double time = earliest->x();
        for (std::size_t i = 0; i < members.size(); ++i) {
            const bool hasPoint =
                positions[i] < members[i].size() && members[i][positions[i]].x() == time;
            values[static_cast<qsizetype>(i)] = hasPoint ? members[i][positions[i]++].y() : 0.0;
        }
        merged.append(QPointF(time, aggregate(groupIndex, values)));
    }
}

/// Merges the XICs, which stand in the order of their groups, group by group.
QList<QList<QPointF>> mergeGroups(const QList<QList<XicDimensions>>& groups,
                                  const QList<QList<QPointF>>& xics,
                                  BulkXicExtractor::Aggregate aggregate)
{
    QList<QList<QPointF>> merged;
    merged.reserve(groups.size());
    std::span<const QList<QPointF>> remaining(xics);
    for (qsizetype i = 0; i < groups.size(); ++i) {
        const auto memberCount = static_cast<std::size_t>(groups[i].size());
        merged.append(mergeGroup(static_cast<int>(i), remaining.first(memberCount), aggregate));
        remaining = remaining.subspan(memberCount);
    }
    return merged;
}

/// The pass over the scans: reads them in chunks and sums each spectrum inside the m/z set of each
/// XIC that takes it.
Result<QList<QList<QPointF>>> cutXics(msreader::MsDataSourceInterface* source,
                                      const QList<ScanInfoBasic>& scans,
                                      PeakPickingFilter filter,
                                      const QList<MzSet>& mzSets,
                                      const std::vector<ScanRun>& runs,
                                      const QSharedPointer<ProgressBarInterface>& progress)
{
    XicWriter writer(mzSets.size(), runs);
    XicsOfScan xicsOfScan(runs);
    ProgressContext context(msreader::chunkCount(scans.size()), progress);
    for (qsizetype start = 0; start < scans.size(); start += msreader::kScansPerChunk) {
        const qsizetype end = std::min(start + msreader::kScansPerChunk, scans.size());
        ZEL_ASSIGN_OR_RETURN(const QList<QList<QPointF>> spectra,
                             msreader::readScans(source, scans, start, end, filter));
        for (qsizetype scan = start; scan < end; ++scan) {
            const double time = scans[scan].retentionTimeMinutes;
            for (const ScanRun& run : xicsOfScan.advanceTo(scan)) {
                const double sum = sumInside(spectra[scan - start], mzSets[run.xicIndex]);
                writer.append(run.xicIndex, QPointF(time, sum));
            }
        }
        ++context;
        if (context.isCanceled()) {
            ZEL_RETURN_ERROR(kOperationCanceledError);
        }
    }
    return writer.takeXics();
}

Error notEnoughMemoryFor(qsizetype xicCount)
{
    return Error(kError, QStringLiteral("Not enough memory for %1 chromatograms").arg(xicCount));
}

} // namespace

BulkXicExtractor::BulkXicExtractor(msreader::MsDataSourceInterface* source)
    : m_source(source)
{}

Result<QList<QList<QPointF>>> BulkXicExtractor::xic(
    const QList<XicDimensions>& dimensions,
    int msLevel,
    PeakPickingFilter filter,
    const QSharedPointer<ProgressBarInterface>& progress) const
try {
    if (filter != PeakPickingFilter::Profile && filter != PeakPickingFilter::Centroid) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         "Profile and Centroid peak picking modes are supported only");
    }
    // A single XIC is asked for often and quickly; its times would only fill the log.
    const bool logTimes = dimensions.size() != 1;
    QElapsedTimer timer;
    if (logTimes) {
        timer.start();
        qCDebug(algoLog) << "BulkXicExtractor::xic started. Count:" << dimensions.size();
    }

    const MsQuery scanQuery =
        MsQuery::createByTime(unionOfTimes(dimensions), MzSet::unbounded(), msLevel);
    ZEL_ASSIGN_OR_RETURN(const QList<msreader::MsScanId> ids, m_source->scanIds(scanQuery));
    ZEL_ASSIGN_OR_RETURN(const QList<ScanInfoBasic> scans, m_source->scanInfoBasic(ids));
    const QList<MzSet> expanded = expandedMzSets(dimensions);
    const std::vector<ScanRun> runs = findScanRuns(dimensions, scans);
    if (logTimes) {
        qCDebug(algoLog) << "BulkXicExtractor::xic preparation time: " << timer.restart();
    }

    ZEL_ASSIGN_OR_RETURN(QList<QList<QPointF>> xics,
                         cutXics(m_source, scans, filter, expanded, runs, progress));
    if (logTimes) {
        qCDebug(algoLog) << "BulkXicExtractor::xic extraction time: " << timer.elapsed();
    }
    return xics;
} catch (const std::bad_alloc&) {
    ZEL_RETURN_ERROR(notEnoughMemoryFor(dimensions.size()));
}

Result<QList<QList<QPointF>>> BulkXicExtractor::xic(
    const QList<QList<XicDimensions>>& dimensionGroups,
    const Aggregate& aggregate,
    int msLevel,
    PeakPickingFilter filter,
    const QSharedPointer<ProgressBarInterface>& progress) const
try {
    if (dimensionGroups.isEmpty()) {
        return QList<QList<QPointF>>();
    }
    const auto hasSeveral = [](const QList<XicDimensions>& group) { return group.size() > 1; };
    if (aggregate == nullptr && std::ranges::any_of(dimensionGroups, hasSeveral)) {
        ZEL_RETURN_ERROR(kError, "A group of several chromatograms needs a function to fold them");
    }
    // Only a probe that the source is usable; the range itself is not needed.
    ZEL_ASSIGN_OR_RETURN([[maybe_unused]] const TimeSet probe, m_source->retentionTimeRange());

    QList<XicDimensions> flat;
    for (const QList<XicDimensions>& group : dimensionGroups) {
        flat.append(group);
    }
    ZEL_ASSIGN_OR_RETURN(const QList<QList<QPointF>> xics, xic(flat, msLevel, filter, progress));
    return mergeGroups(dimensionGroups, xics, aggregate);
} catch (const std::bad_alloc&) {
    ZEL_RETURN_ERROR(notEnoughMemoryFor(dimensionGroups.size()));
}

} // namespace zel
