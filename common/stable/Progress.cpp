#include "common/stable/Progress.h"

namespace zel {

Cancelable::~Cancelable() = default;

ProgressBarInterface::~ProgressBarInterface() = default;

ProgressContext::ProgressContext(int stepCount, const QSharedPointer<ProgressBarInterface>& sink)
    : m_sink(sink)
{
    if (m_sink) {
        m_sink->beginPhase(stepCount);
    }
}

ProgressContext::~ProgressContext()
{
    if (m_sink) {
        m_sink->endPhase();
    }
}

ProgressContext& ProgressContext::operator++()
{
    if (m_sink) {
        m_sink->stepDone();
    }
    return *this;
}

void ProgressContext::setText(const QString& text)
{
    if (m_sink) {
        m_sink->setText(text);
    }
}

bool ProgressContext::isCanceled() const
{
    return zel::isCanceled(m_sink);
}

bool isCanceled(const QSharedPointer<Cancelable>& cancelable)
{
    return cancelable && cancelable->isCanceled();
}

} // namespace zel
