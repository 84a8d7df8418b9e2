#pragma once

#include "common/stable/Progress.h"

#include <QString>

namespace zel::msreader {

/// A progress sink that can also go by the spectra that are read, for work that counts no steps of
/// its own.
class ScanProgress : public ProgressBarInterface
{
public:
    /// About `count` spectra are going to be read, for what `title` says.
    virtual void beginScans(qsizetype count, const QString& title) = 0;
    /// One spectrum was read; of no effect outside of beginScans and endScans.
    virtual void scanRead() = 0;
    virtual void endScans() = 0;
};

/// Reading of known length, as long as this lives. One at a time.
class ScanPass
{
public:
    ScanPass(qsizetype count, const QString& title, const QSharedPointer<ScanProgress>& progress)
        : m_progress(progress)
    {
        m_progress->beginScans(count, title);
    }
    ~ScanPass() { m_progress->endScans(); }
    Q_DISABLE_COPY_MOVE(ScanPass)

private:
    QSharedPointer<ScanProgress> m_progress;
};

} // namespace zel::msreader
