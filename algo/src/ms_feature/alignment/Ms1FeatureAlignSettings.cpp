#include "ms_feature/alignment/Ms1FeatureAlignSettings.h"

#include <QTextStream>

namespace zel {

const MsFeatureFinderSettings Ms1FeatureAlignSettings::featureFinderSettingsDefault;
constinit const QString Ms1FeatureAlignSettings::htmlDumpFilenameDefault;

Ms1FeatureAlignSettings::Ms1FeatureAlignSettings() = default;

QString Ms1FeatureAlignSettings::toString() const
{
    QString text;
    QTextStream stream(&text);
    stream << "MS1FeatureAlignSettings:\n";
    switch (mode) {
    case Mode::Disabled:
        stream << "\tMode\t: Disabled\n";
        break;
    case Mode::DifferentTopologyOnly:
        stream << "\tMode\t: DifferentTopologyOnly\n";
        break;
    case Mode::Full:
        stream << "\tMode\t: Full\n";
        break;
    }
    stream << "\tfeatureFinderSettings\t: "
           << featureFinderSettings.toString().replace(QStringLiteral("\n\t"),
                                                       QStringLiteral("\n\t\t"))
           << '\n';
    stream << "\tcorrelationThreshold\t: " << correlationThreshold << '\n';
    stream << "\thtmlDumpFilename\t: " << htmlDumpFilename << '\n';
    return text;
}

} // namespace zel
