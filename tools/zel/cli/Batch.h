#pragma once

#include "tools/zel/cli/Command.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <string>
#include <vector>

namespace zel::tool {

/// Notes which of the runs of one call have failed. One bad run does not cost the others: its
/// failure is reported at once, and the call fails at its end.
class Batch
{
public:
    /// \param runCount  a single run has nobody to wait for: its failure is that of the call
    Batch(qsizetype runCount, const CommandContext& context);

    void addFailure(const QString& run, const Error& failure);
    qsizetype failureCount() const { return m_failed.size(); }

    /// kNoError, or the failure of the call, such as "2 of 3 runs failed: b.mzML, c.mzML".
    Error result() const;

private:
    qsizetype m_runCount;
    bool m_verbose;
    QStringList m_failed;
    Error m_last;
};

/// Does the work for one file after the other. \return kOperationCanceledError at once; else what
/// Batch::result gives after the last
Error forEachRun(const std::vector<std::string>& files,
                 const CommandContext& context,
                 const std::function<Error(const std::string&)>& work);

} // namespace zel::tool
