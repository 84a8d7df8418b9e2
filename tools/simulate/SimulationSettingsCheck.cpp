#include "common/stable/SharedNumbers.h"
#include "tools/simulate/SimulationSettingTable.h"
#include "tools/simulate/SimulationSettings.h"

#include <algorithm>
#include <cmath>

namespace zel::simulate {

namespace {

constexpr double kMaxScanCount =
    1e7; // so that a slip of the pen is named instead of filling memory

/// A setting with limits that other settings give it.
struct Bounded
{
    const char* name;
    SettingValue value;
    SettingLimits limits;
};

std::optional<SettingFault> firstFault(std::initializer_list<Bounded> all)
{
    for (const auto& [name, value, limits] : all) {
        if (!isWithin(value, limits)) {
            return SettingFault{name,
                                QStringLiteral("must be %1, but is %2")
                                    .arg(settingRangeText(limits), settingText(value))};
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<SettingFault> SimulationSettings::firstFault() const
{
    for (const auto& setting : simulationSettings().settings) {
        const bool isOfNoMobility = setting.readBy == kMobilityRun && mobilityScanCount == 0;
        const Bounded one = {setting.name, settingValue(setting, *this), setting.limits};
        if (const auto fault = simulate::firstFault({one}); fault && !isOfNoMobility) {
            return fault;
        }
    }
    const auto fault = simulate::firstFault({
        {"maxPeptideLength", maxPeptideLength, {.lowest = double(minPeptideLength)}},
        {"maxCharge", maxCharge, {.lowest = double(minCharge)}},
        {"mzEnd", mzEnd, {.lowest = mzStart + 1}},
        {"endMinutes", endMinutes, {.lowest = startMinutes}},
        {"driftMinutes", driftMinutes, {.highest = maxDriftMinutes()}},
    });
    if (fault) {
        return fault;
    }
    if (mobilityScanCount > 0) {
        const auto mobilityFault = simulate::firstFault({
            {"mobilityScanCount", mobilityScanCount, {.lowest = 2}},
            {"mobilitySigma", mobilitySigma, {.lowest = std::abs(mobilityStep())}},
        });
        if (mobilityFault) {
            return mobilityFault;
        }
    }
    const double scanCount = durationMinutes() * kSecondsPerMinute / scanIntervalSeconds *
                             std::max(mobilityScanCount, 1);
    if (scanCount > kMaxScanCount) {
        return SettingFault{
            "scanIntervalSeconds",
            QStringLiteral("gives %1 scans, more than the %2 that a run may have")
                .arg(settingText(std::ceil(scanCount)), settingText(kMaxScanCount))};
    }
    return std::nullopt;
}

Error SimulationSettings::check() const
{
    if (const auto fault = firstFault()) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("%1 %2").arg(QLatin1StringView(fault->name), fault->reason));
    }
    return kNoError;
}

} // namespace zel::simulate
