#include "tools/zel/features/ProfileWidth.h"

#include "common/stable/MathUtils.h"

#include <algorithm>
#include <span>
#include <vector>

namespace zel::tool {

using msreader::MsQuery;
using msreader::MsScanId;
using msreader::PeakPickingFilter;

namespace {

constexpr qsizetype kSpectrumCount = 10;
constexpr std::size_t kPeaksOfSpectrum = 50;

/// Where the line through two samples has this height.
double placeOf(double height, const QPointF& below, const QPointF& above)
{
    return MathUtils::lerp(below, above, MathUtils::linearStep(below.y(), above.y(), height)).x();
}

/// The width of the peak with its top at this sample; nothing when it does not fall to half its
/// height on both sides.
std::optional<double> widthAt(std::span<const QPointF> samples, std::size_t top)
{
    const double half = 0.5 * samples[top].y();
    std::size_t left = top;
    while (left > 0 && samples[left].y() > half && samples[left - 1].y() <= samples[left].y()) {
        --left;
    }
    std::size_t right = top;
    while (right + 1 < samples.size() && samples[right].y() > half &&
           samples[right + 1].y() <= samples[right].y()) {
        ++right;
    }
    if (samples[left].y() > half || samples[right].y() > half) {
        return std::nullopt;
    }
    return placeOf(half, samples[right], samples[right - 1]) -
           placeOf(half, samples[left], samples[left + 1]);
}

/// Adds the widths of the highest peaks of a spectrum.
void addWidths(std::span<const QPointF> samples, std::vector<double>& widths)
{
    std::vector<std::size_t> tops;
    for (std::size_t i = 1; i + 1 < samples.size(); ++i) {
        if (samples[i].y() > samples[i - 1].y() && samples[i].y() >= samples[i + 1].y()) {
            tops.push_back(i);
        }
    }
    std::ranges::stable_sort(
        tops, [&](std::size_t a, std::size_t b) { return samples[a].y() > samples[b].y(); });
    tops.resize(std::min(tops.size(), kPeaksOfSpectrum));
    for (const std::size_t top : tops) {
        if (const auto width = widthAt(samples, top)) {
            widths.push_back(*width);
        }
    }
}

} // namespace

Result<std::optional<double>> profilePeakWidth(msreader::MsDataSourceInterface* source)
{
    ZEL_ASSIGN_OR_RETURN(const QList<MsScanId> ids, source->scanIds(MsQuery::createByMsLevel(1)));
    std::vector<double> widths;
    const qsizetype step = std::max<qsizetype>(ids.size() / kSpectrumCount, 1);
    for (qsizetype i = step / 2; i < ids.size(); i += step) {
        ZEL_ASSIGN_OR_RETURN(const auto info, source->scanInfo(ids[i]));
        if (info.storedAs == PeakPickingFilter::Profile) {
            ZEL_ASSIGN_OR_RETURN(const QList<QPointF> points,
                                 source->scanData(MsQuery(ids[i], PeakPickingFilter::Profile)));
            addWidths(points, widths);
        }
    }
    return widths.empty() ? std::nullopt : std::optional(MathUtils::median(std::move(widths)));
}

} // namespace zel::tool
