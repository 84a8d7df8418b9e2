#include "common/stable/Error.h"

#include <QTextStream>

namespace zel {

namespace {

QString codeText(ErrorCode code)
{
    switch (code) {
    case kNoError:
        return QStringLiteral("No error");
    case kError:
        return QStringLiteral("Error");
    case kBadParameterError:
        return QStringLiteral("Bad parameter");
    case kFileOpenError:
        return QStringLiteral("Cannot open file");
    case kFileFormatError:
        return QStringLiteral("Invalid file format");
    case kOperationCanceledError:
        return QStringLiteral("Operation canceled");
    }
    return QStringLiteral("Error %1").arg(static_cast<int>(code));
}

} // namespace

Error::Error(ErrorCode code)
    : m_code(code)
{}

Error::Error(ErrorCode code, const QString& message)
    : m_code(code)
    , m_message(message)
{}

Error::Error(ErrorCode code, const char* message)
    : m_code(code)
    , m_message(QString::fromUtf8(message))
{}

Error::~Error() = default;

Error& Error::operator=(ErrorCode code)
{
    return *this = Error(code);
}

Error Error::NoError()
{
    return {};
}

Error& Error::ecatch(const char* function, const char* file, int line)
{
    m_frames.append({QString::fromUtf8(function), QString::fromUtf8(file), line});
    return *this;
}

QString Error::errorMessage() const
{
    QString text;
    QTextStream stream(&text);
    stream << codeText(m_code);
    if (!m_message.isEmpty()) {
        stream << ": " << m_message;
    }
    for (const QString& warning : warnings()) {
        stream << "\n  warning: " << warning;
    }
    for (const ErrorFrame& frame : m_frames) {
        stream << "\n  at " << frame.function << " (" << frame.file << ':' << frame.line << ')';
    }
    return text;
}

Error& Error::addWarning(const QString& warning)
{
    addWarningInternal(warning);
    return *this;
}

Error& Error::addWarnings(const QList<QString>& warnings)
{
    addWarningsInternal(warnings);
    return *this;
}

Error& Error::clearWarnings()
{
    clearWarningsInternal();
    return *this;
}

} // namespace zel
