#include "tools/sources/RunSelection.h"

#include "common/stable/NumberText.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>

namespace zel::msreader {

namespace {

/// What a compensation voltage may differ by, V, and an m/z lie outside an isolation window.
constexpr double kTolerance = 0.01;

auto orderOf(const PrecursorInfo& window)
{
    return std::tuple(window.isolationMz, window.isolationLowerOffset, window.isolationUpperOffset);
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

/// Sorts and leaves each value once.
template <typename Value, typename Order>
void sortOut(QList<Value>& values, Order order)
{
    std::ranges::sort(values, {}, order);
    // Not std::ranges::unique, of which clang 14 cannot read what it returns.
    const auto isRepeated = [&order](const Value& a, const Value& b) {
        return std::invoke(order, a) == std::invoke(order, b);
    };
    values.erase(std::unique(values.begin(), values.end(), isRepeated), values.end());
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
        if (scan.info.polarity != Polarity::Unknown) {
            kinds.polarities.append(scan.info.polarity);
        }
        if (scan.info.compensationVoltage) {
            kinds.compensationVoltages.append(*scan.info.compensationVoltage);
        }
        if (hasWindow(scan)) {
            kinds.isolationWindows.append(scan.precursor);
        }
    }
    sortOut(kinds.polarities, std::identity());
    sortOut(kinds.compensationVoltages, std::identity());
    sortOut(kinds.isolationWindows, orderOf);
    return kinds;
}

bool isSameWindow(const PrecursorInfo& a, const PrecursorInfo& b)
{
    return orderOf(a) == orderOf(b);
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
           (!voltage || (scan.info.compensationVoltage &&
                         std::abs(*scan.info.compensationVoltage - *voltage) <= kTolerance)) &&
           (!window || !hasWindow(scan) || isSameWindow(scan.precursor, *window));
}

} // namespace zel::msreader
