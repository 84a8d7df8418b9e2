#pragma once

#include "common/stable/Export.h"
#include "feature_finder/records/Hill.h"

#include <QList>
#include <QMap>
#include <QString>

namespace zel {

/// Writes hills as CSV text, to be looked at with other programs. Real numbers have six significant
/// digits. A file that cannot be written leaves a warning in the log and nothing else.
class ZEL_EXPORT HillsUtils
{
public:
    /// Columns mzApex, mzLo, mzHi, d2Lo, d2Hi, d2Apex, intensity.
    static void writeHillsListToCSV(const QList<HillD2>& hills, const QString& path);

    /// One coloured rectangle for each hill: columns mzLo, mzHi, rtLo, rtHi, color, opacity, misc,
    /// the last with the apex (m/z and scan number).
    /// \param indexToRetentionTime  minutes of each scan number; a number that is missing gives 0
    static void writeHillsListToCSV(const QList<HillD1>& hills,
                                    const QString& path,
                                    const QMap<int, double>& indexToRetentionTime);
};

} // namespace zel
