#include "common/ms_types/MsScanId.h"

#include <QString>

namespace zel::msreader {

QString MsScanId::toString() const
{
    const auto text = [](const std::optional<long long>& number) {
        return number ? QString::number(*number) : QStringLiteral("-");
    };
    return d1 && !d2 ? text(d1) : text(d1) + QLatin1Char('.') + text(d2);
}

} // namespace zel::msreader
