#include "common/stable/Tracer.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QThread>

#include <mutex>

namespace zel {

namespace {

using Clock = std::chrono::steady_clock;

double microseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::micro>(duration).count();
}

/// The open trace file. Events are appended and flushed one by one: the JSON array form allows a
/// missing end, so the file is readable however the process stops.
class TraceFile
{
public:
    TraceFile()
        : m_file(qEnvironmentVariable("ZEL_TRACE_FILE"))
        , m_origin(Clock::now())
    {
        if (!m_file.fileName().isEmpty() &&
            m_file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            m_file.write("[\n");
            m_file.flush();
        }
    }

    bool isOpen() const { return m_file.isOpen(); }

    void append(const char* category, const char* label, Clock::time_point start)
    {
        const double duration = microseconds(Clock::now() - start);
        const auto thread = reinterpret_cast<quintptr>(QThread::currentThreadId());
        const QString event =
            QStringLiteral(
                R"({"name":"%1","cat":"%2","ph":"X","ts":%3,"dur":%4,"pid":1,"tid":%5},)")
                .arg(QString::fromUtf8(label), QString::fromUtf8(category))
                .arg(microseconds(start - m_origin), 0, 'f', 3)
                .arg(duration, 0, 'f', 3)
                .arg(thread);
        const std::lock_guard lock(m_mutex);
        m_file.write(event.toUtf8() + '\n');
        m_file.flush();
    }

private:
    QFile m_file;
    Clock::time_point m_origin;
    std::mutex m_mutex;
};

TraceFile& traceFile()
{
    // Never destroyed: a scope may close while the process ends. Every event is flushed, so nothing
    // is lost.
    static auto* const file = new TraceFile;
    return *file;
}

} // namespace

bool Tracer::isInitialized()
{
    return traceFile().isOpen();
}

bool tracer_categories_settings::isCategoryEnabled(const char16_t* categoryName)
{
    static const QStringList enabled =
        qEnvironmentVariable("ZEL_TRACE_CATEGORIES").split(QLatin1Char(','), Qt::SkipEmptyParts);
    return enabled.isEmpty() || enabled.contains(QString::fromUtf16(categoryName));
}

ZelScopedTrace::ZelScopedTrace(const char* category, const char* label)
    : m_category(category)
    , m_label(label)
    , m_start(Clock::now())
{}

ZelScopedTrace::~ZelScopedTrace()
{
    if (Tracer::isInitialized()) {
        traceFile().append(m_category, m_label, m_start);
    }
}

} // namespace zel
