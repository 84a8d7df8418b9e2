#pragma once

#include "common/ms_types/TurboXicSettings.h"
#include "common/stable/Export.h"

#include <QDateTime>
#include <QString>
#include <QVersionNumber>

class QDebug;

namespace zel {

/// What the first part of a cache file of TurboXic says of the rest. docs/file-formats.md describes
/// the file.
struct TurboXicHeader
{
    int magic = 0;
    QVersionNumber version;
    QDateTime dateTime; ///< local time of writing
    TurboXicSettings settings;
    QString dataFingerprint;
};

ZEL_EXPORT QDebug operator<<(QDebug debug, const TurboXicHeader& header);

} // namespace zel
