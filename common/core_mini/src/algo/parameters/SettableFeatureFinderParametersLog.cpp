#include "common/core_mini/src/algo/parameters/FeatureFinderSettingTable.h"
#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "common/stable/Logging.h"

namespace zel {

void SettableFeatureFinderParameters::printFfUserParams() const
{
    for (const auto& setting : featureFinderSettings().settings) {
        qCDebug(algoLog).noquote().nospace()
            << setting.name << ": " << settingText(settingValue(setting, *this));
    }
}

} // namespace zel
