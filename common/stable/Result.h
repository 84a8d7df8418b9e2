#pragma once

#include "common/stable/Error.h"

#include <concepts>
#include <utility>
#include <variant>

namespace zel {

/// Either one value of type T or one Error, returned by value. T may be any movable type, move-only
/// ones included.
///
/// A failed Result keeps its own warnings and those of the held error alike; a successful one has
/// just its own.
template <typename T>
class [[nodiscard]] Result : public Warnings
{
public:
    Result(T&& value)
        : m_held(std::in_place_index<kValueIndex>, std::move(value))
    {}
    Result(const T& value) requires std::copy_constructible<T>
        : m_held(std::in_place_index<kValueIndex>, value)
    {}
    Result(Error&& error)
        : m_held(std::in_place_index<kErrorIndex>, std::move(error))
    {
        Warnings::resetWarningsInternal(heldError().warnings());
    }
    Result(const Error& error)
        : Result(Error(error))
    {}
    Result(ErrorCode code)
        : Result(Error(code))
    {}

    /// True when a value is held.
    bool isOk() const { return m_held.index() == kValueIndex; }

    /// The held value; only valid when `isOk()`.
    T& value()
    {
        Q_ASSERT(isOk());
        return *std::get_if<kValueIndex>(&m_held);
    }
    const T& value() const
    {
        Q_ASSERT(isOk());
        return *std::get_if<kValueIndex>(&m_held);
    }

    /// A copy of the held error; a no-error Error when a value is held.
    Error error() const { return isOk() ? Error() : heldError(); }

    Result& addWarning(const QString& warning)
    {
        addWarningInternal(warning);
        return *this;
    }
    Result& addWarnings(const QList<QString>& warnings)
    {
        addWarningsInternal(warnings);
        return *this;
    }
    Result& clearWarnings()
    {
        clearWarningsInternal();
        return *this;
    }

protected:
    void addWarningInternal(const QString& warning) override
    {
        Warnings::addWarningInternal(warning);
        if (!isOk()) {
            heldError().addWarning(warning);
        }
    }
    void addWarningsInternal(const QList<QString>& warnings) override
    {
        Warnings::addWarningsInternal(warnings);
        if (!isOk()) {
            heldError().addWarnings(warnings);
        }
    }
    void clearWarningsInternal() override
    {
        Warnings::clearWarningsInternal();
        if (!isOk()) {
            heldError().clearWarnings();
        }
    }
    void resetWarningInternal(const QString& warning) override
    {
        Warnings::resetWarningInternal(warning);
        if (!isOk()) {
            heldError().resetWarning(warning);
        }
    }
    void resetWarningsInternal(const QList<QString>& warnings) override
    {
        Warnings::resetWarningsInternal(warnings);
        if (!isOk()) {
            heldError().resetWarnings(warnings);
        }
    }

private:
    static constexpr std::size_t kValueIndex = 0;
    static constexpr std::size_t kErrorIndex = 1;

    Error& heldError() { return *std::get_if<kErrorIndex>(&m_held); }
    const Error& heldError() const { return *std::get_if<kErrorIndex>(&m_held); }

    std::variant<T, Error> m_held;
};

} // namespace zel
