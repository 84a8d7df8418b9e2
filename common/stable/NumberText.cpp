#include "common/stable/NumberText.h"

#include <QLocale>

namespace zel {

QByteArray roundTripText(double value)
{
    return QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
}

} // namespace zel
