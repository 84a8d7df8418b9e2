#include "tools/sources/RunSelection.h"

#include "common/stable/NumberText.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
#include <utility>

namespace zel::msreader {

namespace {

/// What values of one kind may differ by, as instruments let them jitter: compensation voltages, V,
/// and centres and offsets of isolation windows, m/z. Also what an m/z may lie outside a window.
constexpr double kTolerance = 0.01;

std::array<double, 1> orderOf(double voltage)
{
    return {voltage};
}

std::array<double, 3> orderOf(const PrecursorInfo& window)
{
    return {window.isolationMz, window.isolationLowerOffset, window.isolationUpperOffset};
}

bool isNear(double a, double b)
{
    return std::abs(a - b) <= kTolerance;
}

/// Whether two voltages or windows are of one kind.
template <typename Value>
bool isSame(const Value& a, const Value& b)
{
    return std::ranges::equal(orderOf(a), orderOf(b), isNear);
}

bool hasWindow(const ScanRecord& scan)
{
    return scan.precursor.isolationMz > 0.0;
}

bool contains(const PrecursorInfo& window, double mz)
{
    return mz >= window.isolationMz - window.isolationLowerOffset - kTolerance &&
           mz <= window.isolationMz + window.isolationUpperOffset + kTolerance;
}

/// Sorts, and leaves of each kind the first.
template <typename Value>
void sortOut(QList<Value>& values)
{
    const auto order = [](const Value& value) { return orderOf(value); };
    std::ranges::sort(values, {}, order);
    QList<Value> kinds;
    for (const Value& value : std::as_const(values)) {
        auto kind = kinds.crbegin(); // of thousands of windows only the near ones are looked at
        while (kind != kinds.crend() && isNear(orderOf(*kind)[0], orderOf(value)[0]) &&
               !isSame(*kind, value)) {
            ++kind;
        }
        if (kind == kinds.crend() || !isSame(*kind, value)) {
            kinds.append(value);
        }
    }
    values = kinds;
}

} // namespace

QString RunSelection::name() const
{
    QStringList parts;
    if (polarity) {
        parts.append(*polarity == Polarity::Positive ? QStringLiteral("positive")
                                                     : QStringLiteral("negative"));
    }
    if (compensationVoltage) {
        parts.append(QLatin1String("faims") +
                     QString::fromLatin1(roundTripText(*compensationVoltage)));
    }
    if (isolationMz) {
        parts.append(QLatin1String("isolation") + QString::fromLatin1(roundTripText(*isolationMz)));
    }
    return parts.join(QLatin1Char('.'));
}

ScanKinds kindsOf(std::span<const ScanRecord> scans, int msLevel)
{
    ScanKinds kinds;
    for (const ScanRecord& scan : scans) {
        if (scan.info.msLevel != msLevel) {
            continue;
        }
        if (scan.info.polarity != Polarity::Unknown &&
            !kinds.polarities.contains(scan.info.polarity)) {
            kinds.polarities.append(scan.info.polarity);
        }
        if (scan.info.compensationVoltage) {
            kinds.compensationVoltages.append(*scan.info.compensationVoltage);
        }
        if (hasWindow(scan)) {
            kinds.isolationWindows.append(scan.precursor);
        }
    }
    std::ranges::sort(kinds.polarities);
    sortOut(kinds.compensationVoltages);
    sortOut(kinds.isolationWindows);
    return kinds;
}

bool isSameWindow(const PrecursorInfo& a, const PrecursorInfo& b)
{
    return isSame(a, b);
}

std::optional<PrecursorInfo> windowAround(std::span<const ScanRecord> scans, double mz)
{
    const auto rank = [mz](const PrecursorInfo& window) {
        return std::tuple(std::abs(window.isolationMz - mz), orderOf(window));
    };
    std::optional<PrecursorInfo> nearest;
    for (const ScanRecord& scan : scans) {
        if (hasWindow(scan) && contains(scan.precursor, mz) &&
            (!nearest || rank(scan.precursor) < rank(*nearest))) {
            nearest = scan.precursor;
        }
    }
    return nearest;
}

bool isSelected(const ScanRecord& scan,
                const RunSelection& selection,
                const std::optional<PrecursorInfo>& window)
{
    const std::optional<double>& voltage = selection.compensationVoltage;
    return (!selection.polarity || scan.info.polarity == *selection.polarity) &&
           (!voltage ||
            (scan.info.compensationVoltage && isSame(*scan.info.compensationVoltage, *voltage))) &&
           (!window || !hasWindow(scan) || isSameWindow(scan.precursor, *window));
}

} // namespace zel::msreader
