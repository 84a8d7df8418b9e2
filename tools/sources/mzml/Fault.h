#pragma once

#include <QString>

#include <exception>
#include <new>

namespace zel::msreader {

/// Runs a call into a library that throws and turns its exceptions into a text, empty when there
/// was none.
template <typename Call>
QString faultOf(Call call)
{
    try {
        call();
        return {};
    } catch (const std::bad_alloc&) {
        return QStringLiteral("there is not enough memory for its data");
    } catch (const std::exception& exception) {
        return QString::fromUtf8(exception.what()).simplified();
    } catch (...) {
        return QStringLiteral("it cannot be read or written");
    }
}

} // namespace zel::msreader
