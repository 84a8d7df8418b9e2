#include "tools/sources/mzml/SpectrumRun.h"

#include "tools/sources/SpectrumUtils.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <set>

namespace zel::msreader {

namespace {

/// How many spectra of a level are read to judge their kind.
constexpr std::size_t kSampleSize = 5;

/// The records of a run before they have ids.
struct Headers
{
    std::vector<ScanRecord> records;
    std::vector<StoredSpectrum> stored; ///< parallel to records
    std::vector<bool> isKindStated;     ///< parallel to records
};

Result<Headers> readHeaders(SpectrumFile& file)
{
    Headers headers;
    headers.records.reserve(static_cast<std::size_t>(file.spectrumCount()));
    headers.stored.reserve(static_cast<std::size_t>(file.spectrumCount()));
    bool hasMs1 = false;
    for (qsizetype i = 0; i < file.spectrumCount(); ++i) {
        ZEL_ASSIGN_OR_RETURN(const SpectrumHeader header, file.readHeader(i));
        if (!header.isMassSpectrum) {
            continue;
        }
        hasMs1 = hasMs1 || header.info.msLevel == 1;
        headers.records.push_back({header.info, header.precursor});
        headers.stored.push_back({i, header.pointCount});
        headers.isKindStated.push_back(header.isKindStated);
    }
    if (!hasMs1) {
        ZEL_RETURN_ERROR(file.formatError(QStringLiteral("it contains no MS1 spectra")));
    }
    return headers;
}

/// Puts as many records from `first` on as `order` is long in this order of their present places.
void reorder(std::size_t first, const std::vector<std::size_t>& order, Headers& headers)
{
    Headers sorted;
    for (const std::size_t i : order) {
        sorted.records.push_back(headers.records[i]);
        sorted.stored.push_back(headers.stored[i]);
        sorted.isKindStated.push_back(headers.isKindStated[i]);
    }
    const auto start = static_cast<std::ptrdiff_t>(first);
    std::ranges::move(sorted.records, headers.records.begin() + start);
    std::ranges::move(sorted.stored, headers.stored.begin() + start);
    std::copy(sorted.isKindStated.begin(),
              sorted.isKindStated.end(),
              headers.isKindStated.begin() + start);
}

/// Leaves out what the selection does not take.
Error select(const SpectrumFile& file, const RunSelection& selection, Headers& headers)
{
    std::optional<PrecursorInfo> window;
    if (selection.isolationMz) {
        window = windowAround(headers.records, *selection.isolationMz);
        if (!window) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("%1: no isolation window contains m/z %2")
                                 .arg(file.path())
                                 .arg(*selection.isolationMz));
        }
    }
    std::vector<std::size_t> selected;
    for (std::size_t i = 0; i < headers.records.size(); ++i) {
        if (isSelected(headers.records[i], selection, window)) {
            selected.push_back(i);
        }
    }
    if (selected.empty()) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("%1: no scan states the polarity and compensation voltage chosen (%2)")
                .arg(file.path(), selection.name()));
    }
    if (selected.size() < headers.records.size()) {
        reorder(0, selected, headers);
        headers.records.resize(selected.size());
        headers.stored.resize(selected.size());
        headers.isKindStated.resize(selected.size());
    }
    return kNoError;
}

/// \return how many records had a time before that of an earlier one
qsizetype sortByTime(Headers& headers)
{
    const auto timeOf = [&headers](std::size_t i) {
        return headers.records[i].info.retentionTimeMinutes;
    };
    qsizetype lateCount = 0;
    double latest = -std::numeric_limits<double>::infinity();
    std::vector<std::size_t> order(headers.records.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = i;
        lateCount += timeOf(i) < latest ? 1 : 0;
        latest = std::max(latest, timeOf(i));
    }
    if (lateCount > 0) {
        std::ranges::stable_sort(order, {}, timeOf);
        reorder(0, order, headers);
    }
    return lateCount;
}

/// For each MS level the spectra with most points, at most kSampleSize of them, the richest first.
std::map<int, std::vector<std::size_t>> richestOfLevels(const Headers& headers)
{
    std::map<int, std::vector<std::size_t>> richest;
    for (std::size_t i = 0; i < headers.records.size(); ++i) {
        std::vector<std::size_t>& sample = richest[headers.records[i].info.msLevel];
        const auto place = std::ranges::find_if(sample, [&headers, i](std::size_t other) {
            return headers.stored[other].pointCount < headers.stored[i].pointCount;
        });
        sample.insert(place, i);
        sample.resize(std::min(sample.size(), kSampleSize));
    }
    return richest;
}

/// Fills in the kind of the spectra of a level that the file leaves open.
Error decideKind(SpectrumFile& file,
                 int msLevel,
                 const std::vector<std::size_t>& sample,
                 Headers& headers)
{
    const auto isOpen = [&headers, msLevel](std::size_t i) {
        return headers.records[i].info.msLevel == msLevel && !headers.isKindStated[i];
    };
    QList<QList<QPointF>> spectra;
    for (const std::size_t i : sample) {
        if (isOpen(i)) {
            ZEL_ASSIGN_OR_RETURN(QList<QPointF> points, readPoints(file, headers.stored[i]));
            spectra.append(std::move(points));
        }
    }
    const PeakPickingFilter kind =
        looksLikeProfile(spectra) ? PeakPickingFilter::Profile : PeakPickingFilter::Centroid;
    for (std::size_t i = 0; i < headers.records.size(); ++i) {
        if (isOpen(i)) {
            headers.records[i].info.storedAs = kind;
        }
    }
    return kNoError;
}

/// Decides what only the points show. \return the levels of combined frames
Result<std::vector<int>> examineLevels(SpectrumFile& file, Headers& headers)
{
    Error e;
    std::vector<int> combinedLevels;
    for (const auto& [msLevel, sample] : richestOfLevels(headers)) {
        const StoredSpectrum& richest = headers.stored[sample.front()];
        ZEL_ASSIGN_OR_RETURN(const SpectrumArrays arrays,
                             file.readArrays(richest.index, richest.pointCount));
        if (!arrays.mobility.empty()) {
            combinedLevels.push_back(msLevel);
        }
        ZEL_RETURN_IF_ERROR(decideKind(file, msLevel, sample, headers));
    }
    return combinedLevels;
}

/// Whether a record may be a mobility scan of the same frame as the one before it.
bool continuesFrame(const ScanRecord& previous, const ScanRecord& record)
{
    return previous.info.mobility && record.info.mobility &&
           previous.info.msLevel == record.info.msLevel &&
           previous.info.retentionTimeMinutes == record.info.retentionTimeMinutes &&
           previous.info.polarity == record.info.polarity &&
           previous.info.compensationVoltage == record.info.compensationVoltage &&
           isSameWindow(previous.precursor, record.precursor);
}

/// Consecutive records [first, first + count).
struct FrameRecords
{
    std::size_t first;
    std::size_t count;
};

/// Cuts the records into frames; a mobility that comes again begins a new frame.
std::vector<FrameRecords> cutFrames(const std::vector<ScanRecord>& records, bool isCombined)
{
    std::vector<FrameRecords> frames;
    std::vector<std::optional<double>> mobilities;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const std::optional<double> mobility = records[i].info.mobility;
        const bool continues = !isCombined && i > 0 && continuesFrame(records[i - 1], records[i]) &&
                               !std::ranges::binary_search(mobilities, mobility);
        if (continues) {
            ++frames.back().count;
        } else {
            frames.push_back({i, 1});
            mobilities.clear();
        }
        mobilities.insert(std::ranges::lower_bound(mobilities, mobility), mobility);
    }
    return frames;
}

/// Numbers the frames of MS1 first and then the others.
void numberFrames(const std::vector<FrameRecords>& frames, std::vector<ScanRecord>& records)
{
    long long d1 = 0;
    for (const bool isMs1Turn : {true, false}) {
        for (const FrameRecords& frame : frames) {
            if ((records[frame.first].info.msLevel == 1) == isMs1Turn) {
                ++d1;
                for (std::size_t i = frame.first; i < frame.first + frame.count; ++i) {
                    records[i].info.scanId.d1 = d1;
                }
            }
        }
    }
}

/// Puts the records of a frame in ascending order of mobility.
void sortFrame(const FrameRecords& frame, Headers& headers)
{
    std::vector<std::size_t> order(frame.count);
    std::iota(order.begin(), order.end(), frame.first);
    std::ranges::sort(
        order, {}, [&headers](std::size_t i) { return headers.records[i].info.mobility; });
    reorder(frame.first, order, headers);
}

/// Numbers the mobility scans of the frames that are stored scan by scan.
void numberMobilityScans(const std::vector<FrameRecords>& frames, Headers& headers)
{
    std::set<int> levels;
    for (const FrameRecords& frame : frames) {
        if (frame.count > 1) {
            sortFrame(frame, headers);
            levels.insert(headers.records[frame.first].info.msLevel);
        }
    }
    const auto hasScans = [&levels, &headers](const FrameRecords& frame) {
        const ScanInfo& info = headers.records[frame.first].info;
        return info.mobility && levels.contains(info.msLevel);
    };

    MobilityAxis axis;
    std::vector<double> mobilities;
    for (const FrameRecords& frame : frames) {
        if (hasScans(frame)) {
            mobilities.clear();
            for (std::size_t i = frame.first; i < frame.first + frame.count; ++i) {
                mobilities.push_back(*headers.records[i].info.mobility);
            }
            axis.addFrame(mobilities);
        }
    }
    axis.finish();
    for (const FrameRecords& frame : frames) {
        long long previous = 0;
        for (std::size_t i = frame.first; i < frame.first + frame.count && hasScans(frame); ++i) {
            ScanInfo& info = headers.records[i].info;
            info.scanId.d2 = std::max(axis.indexOf(*info.mobility), previous + 1);
            previous = *info.scanId.d2;
        }
    }
}

/// Whether a point only fills up an empty spectrum.
bool isFiller(const SpectrumArrays& arrays, std::size_t i)
{
    return arrays.mz[i] == 0.0 && arrays.intensity[i] == 0.0;
}

/// The points that count, in the order of the file.
Result<QList<QPointF>> validPoints(const SpectrumFile& file,
                                   qsizetype index,
                                   const SpectrumArrays& arrays)
{
    QList<QPointF> points;
    points.reserve(static_cast<qsizetype>(arrays.mz.size()));
    for (std::size_t i = 0; i < arrays.mz.size(); ++i) {
        const double mz = arrays.mz[i];
        const double intensity = arrays.intensity[i];
        if (isValidPoint(mz, intensity)) {
            points.append(QPointF(mz, intensity));
        } else if (!isFiller(arrays, i)) {
            ZEL_RETURN_ERROR(
                file.formatError(index, faultOfPoint(static_cast<qsizetype>(i), mz, intensity)));
        }
    }
    return points;
}

} // namespace

Result<SpectrumRun> readRun(SpectrumFile& file, const RunSelection& selection)
{
    Error e;
    SpectrumRun run;
    ZEL_ASSIGN_OR_RETURN(Headers headers, readHeaders(file));
    ZEL_RETURN_IF_ERROR(select(file, selection, headers));
    run.outOfOrderCount = sortByTime(headers);
    ZEL_ASSIGN_OR_RETURN(run.combinedLevels, examineLevels(file, headers));
    const std::vector<FrameRecords> frames =
        cutFrames(headers.records, !run.combinedLevels.empty());
    numberFrames(frames, headers.records);
    numberMobilityScans(frames, headers);
    ZEL_ASSIGN_OR_RETURN(run.index, ScanIndex::create(std::move(headers.records)));
    run.stored = std::move(headers.stored);
    return run;
}

Result<QList<QPointF>> readPoints(SpectrumFile& file, const StoredSpectrum& spectrum)
{
    ZEL_ASSIGN_OR_RETURN(const SpectrumArrays arrays,
                         file.readArrays(spectrum.index, spectrum.pointCount));
    ZEL_ASSIGN_OR_RETURN(QList<QPointF> points, validPoints(file, spectrum.index, arrays));
    if (!std::ranges::is_sorted(points, {}, &QPointF::x)) {
        sortByMz(points);
    }
    return points;
}

Result<QList<QPointF>> readPoints(SpectrumFile& file,
                                  const StoredSpectrum& spectrum,
                                  std::vector<double>& mobilities)
{
    mobilities.clear();
    ZEL_ASSIGN_OR_RETURN(const SpectrumArrays arrays,
                         file.readArrays(spectrum.index, spectrum.pointCount));
    ZEL_ASSIGN_OR_RETURN(QList<QPointF> points, validPoints(file, spectrum.index, arrays));
    for (std::size_t i = 0; i < arrays.mobility.size(); ++i) {
        if (isFiller(arrays, i)) {
            continue;
        }
        if (!std::isfinite(arrays.mobility[i])) {
            ZEL_RETURN_ERROR(
                file.formatError(spectrum.index,
                                 QStringLiteral("mobilities must be finite, but point %1 has %2")
                                     .arg(i)
                                     .arg(arrays.mobility[i])));
        }
        mobilities.push_back(arrays.mobility[i]);
    }
    return points;
}

} // namespace zel::msreader
