#pragma once

#include "common/stable/Export.h"

#include <QSharedPointer>

class QString;

namespace zel {

/// Something that a user can cancel.
class ZEL_EXPORT Cancelable
{
public:
    virtual ~Cancelable();
    virtual bool isCanceled() const = 0;
};

/// The caller's progress sink. The library is handed one by `QSharedPointer`, which may be null.
///
/// The library sets a phase title through `setText` and works through phases of known length by
/// ProgressContext, on the calling thread only. Phases may nest; a sink that shows one bar shows
/// the outermost phase.
class ZEL_EXPORT ProgressBarInterface : public Cancelable
{
public:
    ~ProgressBarInterface() override;

    /// A phase of `stepCount` steps begins.
    virtual void beginPhase(int stepCount) = 0;
    /// The title of what goes on now, translated.
    virtual void setText(const QString& text) = 0;
    /// One step of the innermost phase is done.
    virtual void stepDone() = 0;
    /// The innermost phase has ended, completed or not.
    virtual void endPhase() = 0;
};

/// A scoped counter over a progress sink, for one phase of known length.
///
///     ProgressContext context(chunkCount, progress);
///     for (...) {
///         ...
///         ++context;
///         if (context.isCanceled()) {
///             ZEL_RETURN_ERROR(kOperationCanceledError);
///         }
///     }
///
/// With a null sink it counts without effect and is never canceled. Used from the thread that
/// created it.
class ZEL_EXPORT ProgressContext : public Cancelable
{
public:
    /// Opens the phase.
    ProgressContext(int stepCount, const QSharedPointer<ProgressBarInterface>& sink);
    /// Closes the phase.
    ~ProgressContext() override;
    Q_DISABLE_COPY_MOVE(ProgressContext)

    /// One step done.
    ProgressContext& operator++();
    /// Sets the phase title.
    void setText(const QString& text);
    bool isCanceled() const override;

private:
    QSharedPointer<ProgressBarInterface> m_sink;
};

/// True when the pointer is set and its object reports cancellation.
ZEL_EXPORT bool isCanceled(const QSharedPointer<Cancelable>& cancelable);

} // namespace zel
