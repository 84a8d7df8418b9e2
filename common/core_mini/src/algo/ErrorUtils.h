#pragma once

#include "common/stable/Error.h"
#include "common/stable/MathUtils.h"

#include <type_traits>
#include <utility>

namespace zel {

/// Whether a threshold check lets the bound itself pass.
enum class ErrorUtilsParam { Exclusive = 0, Inclusive = 1 };

/// Checks that turn a comparison into an Error. They check what must hold: each returns no error
/// when it holds, else the failure that is given as the last argument, stamped with the check's own
/// place. A pass never stamps.
///
///     ZEL_RETURN_IF_ERROR(ErrorUtils::notEqual(width, 0, Error(kBadParameterError)));
class ErrorUtils
{
public:
    /// Passes when the container is not empty.
    template <typename Container>
    static Error emptyCheckReturn(const Container& container, Error e)
    {
        return container.empty() ? failed(std::move(e), Q_FUNC_INFO, __LINE__) : Error(kNoError);
    }

    /// Passes when `a == b`.
    template <typename T>
    static Error equal(const T& a, const T& b, Error e)
    {
        return a == b ? Error(kNoError) : failed(std::move(e), Q_FUNC_INFO, __LINE__);
    }

    /// Passes when `!(a == b)`.
    template <typename T>
    static Error notEqual(const T& a, const T& b, Error e)
    {
        return a == b ? failed(std::move(e), Q_FUNC_INFO, __LINE__) : Error(kNoError);
    }

    /// Passes when `value` lies above `threshold`, or on it with `Inclusive`.
    template <typename T>
    static Error aboveThreshold(const T& value, const T& threshold, ErrorUtilsParam param, Error e)
    {
        const bool passes =
            param == ErrorUtilsParam::Inclusive ? value >= threshold : value > threshold;
        return passes ? Error(kNoError) : failed(std::move(e), Q_FUNC_INFO, __LINE__);
    }

    /// Passes when `value` is below `threshold`, or on it with `Inclusive`, which for `double`
    /// fails exactly when `value > threshold`. `Exclusive` then also fails when the two are nearly
    /// equal (MathUtils::nearlyEqual), as an infinity is to every finite number.
    template <typename T>
    static Error belowThreshold(const T& value, const T& threshold, ErrorUtilsParam param, Error e)
    {
        bool fails = param == ErrorUtilsParam::Inclusive ? value > threshold : !(value < threshold);
        if constexpr (std::is_same_v<T, double>) {
            fails = fails || (param == ErrorUtilsParam::Exclusive &&
                              MathUtils::nearlyEqual(value, threshold));
        }
        return fails ? failed(std::move(e), Q_FUNC_INFO, __LINE__) : Error(kNoError);
    }

private:
    static Error failed(Error e, const char* check, int line)
    {
        if (e.hasError()) {
            e.ecatch(check, __FILE__, line);
        }
        return e;
    }
};

} // namespace zel
