#pragma once

#include "common/stable/Export.h"
#include "ms_feature/records/MsFeatureFinderSettings.h"

#include <QString>

namespace zel {

/// The settings of Ms1FeatureAlign. A plain record; every default stands beside its field as
/// `<field>Default`.
struct ZEL_EXPORT Ms1FeatureAlignSettings
{
    /// Which features are aligned.
    enum class Mode : int {
        Disabled = 0,              ///< none
        DifferentTopologyOnly = 1, ///< those of an ion whose samples differ in number of intervals
        Full = 2,                  ///< all
    };

    static const MsFeatureFinderSettings featureFinderSettingsDefault;
    static constexpr Mode modeDefault = Mode::DifferentTopologyOnly;
    static constexpr double correlationThresholdDefault = 0.5;
    static const QString htmlDumpFilenameDefault; ///< ""
    static constexpr double powerDefault = 100.0;

    Ms1FeatureAlignSettings();

    /// All fields but `power`, one a line, indented below a title.
    QString toString() const;

    /// The finder that runs on the sum of the aligned XICs. It lives for one alignment, so that an
    /// `adaptiveHtmlDumpFilename` in here would be written again, and GraphyCollection be cleared,
    /// each time.
    MsFeatureFinderSettings featureFinderSettings;
    Mode mode = modeDefault;
    /// The lowest correlation of the aligned XICs with the most intense one at which they are taken
    /// for aligned; a lower one fails.
    double correlationThreshold = correlationThresholdDefault;
    /// When not empty, three diagrams of each alignment are written there. From 1000 diagrams on,
    /// full pages go to "FeatureRefinerAlignment.<number>.html" in the current folder instead.
    QString htmlDumpFilename = htmlDumpFilenameDefault;
    /// How a shift s of at most m steps is weighted: 1 - |s / m|^power, which hardly hinders shifts
    /// until close to m; for a negative power exp(-(|s| / m^2)^2 * |power|), as if the share were
    /// taken twice. Never below 0.
    double power = powerDefault;
};

} // namespace zel
