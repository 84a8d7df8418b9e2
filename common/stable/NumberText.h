#pragma once

#include "common/stable/Export.h"

#include <QByteArray>

namespace zel {

/// The shortest decimal text that is read back as the same double; independent of the locale.
ZEL_EXPORT QByteArray roundTripText(double value);

} // namespace zel
