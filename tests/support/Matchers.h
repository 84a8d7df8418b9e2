#pragma once

#include "common/stable/Error.h"
#include "common/stable/Result.h"

#include <QPointF>
#include <QString>
#include <gmock/gmock.h>

#include <cmath>
#include <ostream>
#include <stdexcept>

namespace zel {

// How failure messages print our types.

inline void PrintTo(const Error& error, std::ostream* os)
{
    *os << error.errorMessage().toStdString();
}

template <typename T>
void PrintTo(const Result<T>& result, std::ostream* os)
{
    *os << (result.isOk() ? "a value" : result.error().errorMessage().toStdString());
}

} // namespace zel

inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QPointF& point, std::ostream* os)
{
    *os << '(' << point.x() << ", " << point.y() << ')';
}

namespace zel::test {

inline Error errorOf(const Error& error)
{
    return error;
}

template <typename T>
Error errorOf(const Result<T>& result)
{
    return result.error();
}

/// Matches an Error without a failure, or a Result that holds a value.
MATCHER(IsOk, "succeeded")
{
    return !errorOf(arg).hasError();
}

/// Matches a failed Error or Result of this code.
MATCHER_P(HasError, code, "")
{
    return errorOf(arg).equals(code);
}

/// Matches a failed Error or Result of this code and message.
MATCHER_P2(HasError, code, message, "")
{
    return errorOf(arg).equals(code) && errorOf(arg).message() == QString::fromUtf8(message);
}

/// Matches an m/z within `ppm` of the expected one.
MATCHER_P2(NearPpm, expected, ppm, "")
{
    return std::abs(arg - expected) <= expected * ppm * 1e-6;
}

/// The value of a Result; a failed one ends the test with its message.
template <typename T>
T valueOf(Result<T> result)
{
    if (!result.isOk()) {
        throw std::runtime_error(result.error().errorMessage().toStdString());
    }
    return std::move(result.value());
}

} // namespace zel::test
