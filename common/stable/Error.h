#pragma once

#include "common/stable/Export.h"
#include "common/stable/Warnings.h"

#include <QList>
#include <QString>

namespace zel {

/// What kind of failure an Error stands for. The numbers are fixed: callers store and compare them.
enum ErrorCode : int {
    /// No failure.
    kNoError = 0,
    /// An internal inconsistency, a computation that cannot go on, an object used before it was
    /// initialized.
    kError = 1,
    /// An argument, a mode or data for which the operation is not defined.
    kBadParameterError = 2,
    /// A file or folder could not be opened or created.
    kFileOpenError = 4,
    /// A file was opened, but its content is invalid or does not match what is asked for.
    kFileFormatError = 5,
    /// The user canceled. Never carries a text.
    kOperationCanceledError = 20,
};

/// One function that a failure passed on its way to the caller.
struct ErrorFrame
{
    QString function; ///< full signature, as the compiler writes it
    QString file;     ///< path of the source file
    int line = 0;     ///< line at which the failure left the function
};

/// A failure, or its absence, returned by value.
///
/// Each function that a failure passes stamps it with `ecatch`, so that the outermost caller sees
/// one frame for every function, innermost first. See ZEL_RETURN_ERROR and ZEL_RETURN_IF_ERROR at
/// the end of this file for how code does that.
class [[nodiscard]] ZEL_EXPORT Error : public Warnings
{
public:
    /// No error.
    Error() = default;
    Error(ErrorCode code);
    Error(ErrorCode code, const QString& message);
    /// \param message  UTF-8
    Error(ErrorCode code, const char* message);
    Error(const Error&) = default;
    Error(Error&&) noexcept = default;
    ~Error() override;
    Error& operator=(const Error&) = default;
    Error& operator=(Error&&) noexcept = default;
    Error& operator=(ErrorCode code);

    static Error NoError();

    /// True when the code is anything but kNoError.
    bool hasError() const { return m_code != kNoError; }
    bool equals(ErrorCode code) const { return m_code == code; }

    ErrorCode code() const { return m_code; }
    /// The text given with the code; may be empty.
    const QString& message() const { return m_message; }
    /// The functions that stamped this failure, innermost first.
    const QList<ErrorFrame>& frames() const { return m_frames; }

    /// Appends a frame and returns this object.
    Error& ecatch(const char* function, const char* file, int line);

    /// Code, message, warnings and frames as a text of several lines for a human.
    QString errorMessage() const;

    Error& addWarning(const QString& warning);
    Error& addWarnings(const QList<QString>& warnings);
    Error& clearWarnings();

    friend bool operator==(const Error& error, ErrorCode code) { return error.equals(code); }
    friend bool operator!=(const Error& error, ErrorCode code) { return !error.equals(code); }

private:
    ErrorCode m_code = kNoError;
    QString m_message;
    QList<ErrorFrame> m_frames;
};

} // namespace zel

/// Builds an Error from the expression (an Error or an ErrorCode), stamps it with this place and
/// returns it. Works in functions that return Error and in those that return Result<T>.
#define ZEL_RETURN_ERROR(...)                                                                      \
    do {                                                                                           \
        ::zel::Error zelReturnedError{__VA_ARGS__};                                                \
        if (zelReturnedError.hasError()) {                                                         \
            zelReturnedError.ecatch(Q_FUNC_INFO, __FILE__, __LINE__);                              \
        }                                                                                          \
        return zelReturnedError;                                                                   \
    } while (false)

/// Assigns the expression to the function's local `Error e`; when that holds a failure, stamps it
/// and returns it. Works in functions that return Error and in those that return Result<T>.
#define ZEL_RETURN_IF_ERROR(...)                                                                   \
    do {                                                                                           \
        e = (__VA_ARGS__);                                                                         \
        if (e.hasError()) {                                                                        \
            e.ecatch(Q_FUNC_INFO, __FILE__, __LINE__);                                             \
            return e;                                                                              \
        }                                                                                          \
    } while (false)

#define ZEL_CONCATENATE_IMPL(a, b) a##b
#define ZEL_CONCATENATE(a, b) ZEL_CONCATENATE_IMPL(a, b)

/// `ZEL_ASSIGN_OR_RETURN(const auto ids, source->scanIds(query));` unwraps a Result<T>: on success
/// the declaration (or an existing variable) takes the value by move, else the failure is stamped
/// and returned.
#define ZEL_ASSIGN_OR_RETURN(declaration, ...)                                                     \
    auto ZEL_CONCATENATE(zelResult, __LINE__) = (__VA_ARGS__);                                     \
    if (!ZEL_CONCATENATE(zelResult, __LINE__).isOk()) {                                            \
        ZEL_RETURN_ERROR(ZEL_CONCATENATE(zelResult, __LINE__).error());                            \
    }                                                                                              \
    declaration = std::move(ZEL_CONCATENATE(zelResult, __LINE__).value())
