#include "tools/zel/cli/Batch.h"

#include "tools/zel/cli/Messages.h"

#include <exception>

namespace zel::tool {

namespace {

/// What a run throws, such as for want of memory, is a failure of this run only.
Error tryRun(const std::string& file, const std::function<Error(const std::string&)>& work)
{
    try {
        return work(file);
    } catch (const std::exception& problem) {
        return {kError,
                QString::fromStdString(file) + QLatin1String(": ") + exceptionText(problem)};
    }
}

} // namespace

Batch::Batch(qsizetype runCount, const CommandContext& context)
    : m_runCount(runCount)
    , m_verbose(context.verbose)
{}

void Batch::addFailure(const QString& run, const Error& failure)
{
    m_failed.append(run);
    m_last = failure;
    if (m_runCount > 1) {
        tell(failureText(failure, m_verbose));
    }
}

Error Batch::result() const
{
    if (m_failed.isEmpty() || m_runCount == 1) {
        return m_last;
    }
    ZEL_RETURN_ERROR(kError,
                     QStringLiteral("%1 of %2 runs failed: ").arg(m_failed.size()).arg(m_runCount) +
                         m_failed.join(QLatin1String(", ")));
}

Error forEachRun(const std::vector<std::string>& files,
                 const CommandContext& context,
                 const std::function<Error(const std::string&)>& work)
{
    Batch batch(static_cast<qsizetype>(files.size()), context);
    for (const std::string& file : files) {
        const Error e =
            isCanceled(context.progress) ? Error(kOperationCanceledError) : tryRun(file, work);
        if (e.hasError() && isCanceled(context.progress)) {
            ZEL_RETURN_ERROR(kOperationCanceledError);
        }
        if (e.hasError()) {
            batch.addFailure(QString::fromStdString(file), e);
        }
    }
    return batch.result();
}

} // namespace zel::tool
