#include "ms_feature/records/MsFeatureFinderSettingTable.h"
#include "ms_feature/records/MsFeatureFinderSettings.h"

#include <QTextStream>

#include <string_view>

namespace zel {

namespace {

bool isFolding(const Setting<MsFeatureFinderSettings>& setting)
{
    return setting.readBy == kHarmonicMean ||
           setting.name == std::string_view("multiIsotopeMethod");
}

QString textOf(const SettingValue& value)
{
    if (const auto* const number = std::get_if<double>(&value)) {
        return QString::number(*number);
    }
    if (const auto* const masses = std::get_if<QList<double>>(&value)) {
        IsotopeSelector selector;
        selector.setIsotopeMasses(*masses);
        return selector.toString();
    }
    return settingText(value);
}

} // namespace

QString MsFeatureFinderSettings::toString() const
{
    QString text;
    QTextStream stream(&text);
    stream << "MsFeatureFinderSettings:\n";
    switch (mode) {
    case Mode::FixedWidth:
        stream << "\tMode\t:FixedWidth\n";
        break;
    case Mode::Prototype:
        stream << "\tMode\t: Prototype\n";
        break;
    case Mode::Adaptive:
        stream << "\tMode\t: Adaptive\n";
        break;
    }
    for (const auto& setting : msFeatureFinderSettings().settings.subspan(1)) {
        if (!isFolding(setting)) {
            stream << '\t' << setting.name << "\t: " << textOf(settingValue(setting, *this))
                   << '\n';
        }
    }
    return text;
}

} // namespace zel
