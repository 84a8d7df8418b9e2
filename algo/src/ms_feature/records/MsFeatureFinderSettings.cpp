#include "ms_feature/records/MsFeatureFinderSettings.h"

#include "common/stable/SharedNumbers.h"

#include <QTextStream>

#include <algorithm>

namespace zel {

constinit const QString MsFeatureFinderSettings::adaptiveHtmlDumpFilenameDefault;

MsFeatureFinderSettings::MsFeatureFinderSettings() = default;

double MsFeatureFinderSettings::mzMargin(double mz) const
{
    return mz * xicMzTolerancePpm * kPartsPerMillion;
}

double MsFeatureFinderSettings::xicTimeWindowToExtract() const
{
    return 3.0 * std::max(xicApexSearchWindow, xicAreaTimeWindow);
}

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
    const auto line = [&stream](const char* name, const auto& value) {
        stream << '\t' << name << "\t: " << value << '\n';
    };
    line("xicMzTolerancePpm", xicMzTolerancePpm);
    line("xicAreaTimeWindow", xicAreaTimeWindow);
    line("xicApexSearchWindow", xicApexSearchWindow);
    line("isotopeSelector", isotopeSelector.toString());
    line("prototypeElasticity", prototypeElasticity);
    line("prototypePower", prototypePower);
    line("adaptiveAucNegligibleRatio", adaptiveAucNegligibleRatio);
    line("adaptiveScoreNegligibleRatio", adaptiveScoreNegligibleRatio);
    line("adaptiveTightenNegligibleRatio", adaptiveTightenNegligibleRatio);
    line("adaptiveSamplesPerMinute", adaptiveSamplesPerMinute);
    line("adaptiveSmoothingStDev", adaptiveSmoothingStDev);
    line("adaptiveMergeIntensityRatio", adaptiveMergeIntensityRatio);
    line("adaptiveMinSkew", adaptiveMinSkew);
    line("adaptiveHtmlDumpFilename", adaptiveHtmlDumpFilename);
    return text;
}

} // namespace zel
