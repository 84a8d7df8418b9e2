#include "tools/zel/cli/RunFile.h"

#include <iostream>

namespace zel::tool {

Result<QSharedPointer<msreader::MzmlDataSource>> openRun(const QString& path)
{
    ZEL_ASSIGN_OR_RETURN(const auto run, msreader::MzmlDataSource::open(path));
    for (const QString& warning : run->warnings()) {
        std::cerr << "zel: " << warning.toStdString() << '\n';
    }
    return run;
}

} // namespace zel::tool
