#include "common/ms_types/MsReaderThreadPoolProvider.h"

#include <QThreadPool>

namespace zel {

QThreadPool* MsReaderThreadPoolProvider::calculateThreadPool()
{
    static QThreadPool pool;
    return &pool;
}

} // namespace zel
