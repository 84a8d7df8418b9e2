#pragma once

#include "common/stable/Export.h"

class QThreadPool;

namespace zel {

/// The threads for work on spectra that were read.
class ZEL_EXPORT MsReaderThreadPoolProvider
{
public:
    /// The pool for calculations, one for the process, with as many threads as the machine has
    /// processors. Owned by the provider. Thread-safe.
    static QThreadPool* calculateThreadPool();
};

} // namespace zel
