#include "tools/sources/mzml/SpectrumHeader.h"

#include "common/stable/SharedNumbers.h"

#include <pwiz/data/msdata/MSData.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace zel::msreader {

namespace {

namespace pw = pwiz::msdata;
namespace cv = pwiz::cv;

/// The number that a term carries; NaN when it carries none.
double numberOf(const pw::CVParam& param)
{
    double number = std::numeric_limits<double>::quiet_NaN();
    const char* const end = param.value.data() + param.value.size();
    const auto [last, status] = std::from_chars(param.value.data(), end, number);
    return status == std::errc() && last == end ? number : std::numeric_limits<double>::quiet_NaN();
}

/// The same; 0 when there is no such number.
double numberOrZero(const pw::CVParam& param)
{
    const double number = numberOf(param);
    return std::isfinite(number) ? number : 0.0;
}

/// NaN without a time of known unit.
double minutesOf(const pw::CVParam& time)
{
    switch (time.units) {
    case cv::UO_minute:
    case cv::MS_minute_OBSOLETE:
        return numberOf(time);
    case cv::UO_second:
    case cv::MS_second_OBSOLETE:
        return numberOf(time) / kSecondsPerMinute;
    case cv::UO_millisecond:
        return numberOf(time) / 60000.0;
    case cv::UO_hour:
        return numberOf(time) * 60.0;
    default:
        return std::numeric_limits<double>::quiet_NaN();
    }
}

/// The number that one of the terms carries, the first that does.
std::optional<double> firstNumberOf(const pw::ParamContainer& params,
                                    std::initializer_list<cv::CVID> terms)
{
    for (const cv::CVID term : terms) {
        const double number = numberOf(params.cvParam(term));
        if (std::isfinite(number)) {
            return number;
        }
    }
    return std::nullopt;
}

/// The same of what is said of a spectrum or else of its first scan.
std::optional<double> firstNumberOf(const pw::Spectrum& spectrum,
                                    std::initializer_list<cv::CVID> terms)
{
    const auto ofSpectrum = firstNumberOf(static_cast<const pw::ParamContainer&>(spectrum), terms);
    return ofSpectrum || spectrum.scanList.scans.empty()
               ? ofSpectrum
               : firstNumberOf(spectrum.scanList.scans.front(), terms);
}

/// The mobility of the spectrum, or else that of its precursor.
std::optional<double> mobilityOf(const pw::Spectrum& spectrum)
{
    const auto terms = {cv::MS_ion_mobility_drift_time, cv::MS_inverse_reduced_ion_mobility};
    const auto mobility = firstNumberOf(spectrum, terms);
    const bool hasIon =
        !spectrum.precursors.empty() && !spectrum.precursors.front().selectedIons.empty();
    return mobility || !hasIon
               ? mobility
               : firstNumberOf(spectrum.precursors.front().selectedIons.front(), terms);
}

Polarity polarityOf(const pw::Spectrum& spectrum)
{
    const auto has = [&spectrum](cv::CVID term) {
        const auto& scans = spectrum.scanList.scans;
        return spectrum.hasCVParam(term) || (!scans.empty() && scans.front().hasCVParam(term));
    };
    const bool isPositive = has(cv::MS_positive_scan);
    if (isPositive == has(cv::MS_negative_scan)) {
        return Polarity::Unknown;
    }
    return isPositive ? Polarity::Positive : Polarity::Negative;
}

math::ClosedMultiInterval<double, 10> scanWindowsOf(const pw::Scan& scan)
{
    math::ClosedMultiInterval<double, 10> range;
    for (const pw::ScanWindow& window : scan.scanWindows) {
        const double lower = numberOf(window.cvParam(cv::MS_scan_window_lower_limit));
        const double upper = numberOf(window.cvParam(cv::MS_scan_window_upper_limit));
        if (std::isfinite(lower) && std::isfinite(upper)) {
            range.unite({lower, upper});
        }
    }
    return range;
}

/// The first precursor. A window without a stated centre is centred on the selected ion.
PrecursorInfo precursorOf(const pw::Spectrum& spectrum)
{
    PrecursorInfo info;
    if (spectrum.precursors.empty()) {
        return info;
    }
    const pw::Precursor& precursor = spectrum.precursors.front();
    const pw::IsolationWindow& window = precursor.isolationWindow;
    info.isolationMz = numberOrZero(window.cvParam(cv::MS_isolation_window_target_m_z));
    info.isolationLowerOffset = numberOrZero(window.cvParam(cv::MS_isolation_window_lower_offset));
    info.isolationUpperOffset = numberOrZero(window.cvParam(cv::MS_isolation_window_upper_offset));
    if (!precursor.selectedIons.empty()) {
        const pw::SelectedIon& ion = precursor.selectedIons.front();
        info.selectedIonMz = numberOrZero(ion.cvParam(cv::MS_selected_ion_m_z));
        info.charge = static_cast<int>(
            std::clamp(numberOrZero(ion.cvParam(cv::MS_charge_state)), -1000.0, 1000.0));
    }
    if (info.isolationMz <= 0.0) {
        info.isolationMz = info.selectedIonMz;
    }
    return info;
}

/// 0 when the file does not say.
int msLevelOf(const pw::Spectrum& spectrum)
{
    const pw::CVParam level = spectrum.cvParam(cv::MS_ms_level);
    if (!level.empty()) {
        const double number = numberOf(level);
        return number >= 1.0 && number <= 100.0 ? static_cast<int>(number) : 0;
    }
    return spectrum.hasCVParam(cv::MS_MS1_spectrum) ? 1 : 0;
}

} // namespace

SpectrumHeader headerOf(const pw::Spectrum& spectrum)
{
    SpectrumHeader header;
    header.isMassSpectrum = !spectrum.hasCVParam(cv::MS_electromagnetic_radiation_spectrum) &&
                            !spectrum.hasCVParam(cv::MS_absorption_spectrum) &&
                            !spectrum.hasCVParam(cv::MS_emission_spectrum);
    header.pointCount = static_cast<qsizetype>(spectrum.defaultArrayLength);
    const bool isProfile = spectrum.hasCVParam(cv::MS_profile_spectrum);
    const bool isCentroid = spectrum.hasCVParam(cv::MS_centroid_spectrum);
    header.isKindStated = isProfile != isCentroid;
    ScanInfo& info = header.info;
    info.storedAs = isProfile ? PeakPickingFilter::Profile : PeakPickingFilter::Centroid;
    info.msLevel = msLevelOf(spectrum);
    info.retentionTimeMinutes = std::numeric_limits<double>::quiet_NaN();
    if (!spectrum.scanList.scans.empty()) {
        const pw::Scan& scan = spectrum.scanList.scans.front();
        info.retentionTimeMinutes = minutesOf(scan.cvParam(cv::MS_scan_start_time));
        info.acquiredMzRange = scanWindowsOf(scan);
    }
    info.mobility = mobilityOf(spectrum);
    info.polarity = polarityOf(spectrum);
    info.compensationVoltage = firstNumberOf(spectrum, {cv::MS_FAIMS_compensation_voltage});
    header.precursor = precursorOf(spectrum);
    return header;
}

long long scanNumberOf(const QString& nativeId)
{
    for (const QLatin1String key : {QLatin1String("scan="),
                                    QLatin1String("scanId="),
                                    QLatin1String("frame="),
                                    QLatin1String("spectrum=")}) {
        for (const QStringView part : QStringView(nativeId).split(u' ')) {
            if (part.startsWith(key)) {
                return part.sliced(key.size()).toLongLong();
            }
        }
    }
    return 0;
}

} // namespace zel::msreader
