#include "common/stable/Stringify.h"

#include <algorithm>
#include <limits>

namespace zel {

StringifierState::StringifierState() = default;

StringifierState::~StringifierState() = default;

StringifierState StringifierState::extendPrefix(const QString& extension) const
{
    StringifierState extended;
    extended.m_newLinePrefix = m_newLinePrefix + extension;
    return extended;
}

int StringifierState::realNumberPrecision(int current) const
{
    return std::max(current, std::numeric_limits<double>::max_digits10);
}

QString stringify(int value, const StringifierState& /*state*/)
{
    return QString::number(value);
}

} // namespace zel
