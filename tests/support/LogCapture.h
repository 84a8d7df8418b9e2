#pragma once

#include <QLoggingCategory>
#include <QMutex>
#include <QString>
#include <QStringList>

namespace zel::test {

/// While one lives, all Qt log messages go to its list instead of standard error, the library's
/// debug lines included. One at a time.
class LogCapture
{
public:
    LogCapture()
    {
        s_current = this;
        QLoggingCategory::setFilterRules(QStringLiteral("zel.*=true"));
        m_previous = qInstallMessageHandler(
            [](QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& text) {
                const QMutexLocker lock(&s_current->m_mutex);
                s_current->m_lines.append(text);
            });
    }
    ~LogCapture()
    {
        qInstallMessageHandler(m_previous);
        QLoggingCategory::setFilterRules(QStringLiteral("zel.*.debug=false"));
        s_current = nullptr;
    }
    Q_DISABLE_COPY_MOVE(LogCapture)

    QStringList lines() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_lines;
    }
    bool contains(const char* text) const
    {
        return !lines().filter(QString::fromUtf8(text)).isEmpty();
    }

private:
    static inline LogCapture* s_current = nullptr;

    mutable QMutex m_mutex;
    QStringList m_lines;
    QtMessageHandler m_previous = nullptr;
};

} // namespace zel::test
