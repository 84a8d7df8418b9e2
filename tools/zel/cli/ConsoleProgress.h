#pragma once

#include "common/stable/Progress.h"

#include <QString>

namespace zel::tool {

/// Shows the outermost phase on standard error: a bar when that is a terminal, a line at each
/// quarter otherwise. Canceled by Ctrl-C; a second Ctrl-C ends the program at once. Only one object
/// may exist at a time.
class ConsoleProgress : public ProgressBarInterface
{
public:
    ConsoleProgress();
    ~ConsoleProgress() override;
    Q_DISABLE_COPY_MOVE(ConsoleProgress)

    bool isCanceled() const override;
    void beginPhase(int stepCount) override;
    void setText(const QString& text) override;
    void stepDone() override;
    void endPhase() override;

    /// Removes the bar from the terminal.
    void finish();

private:
    void show(int percent);

    bool m_isTerminal;
    bool m_barIsShown = false;
    int m_depth = 0;
    int m_stepCount = 0;
    int m_stepsDone = 0;
    int m_shownPercent = -1;
    QString m_text = QStringLiteral("Working");
};

} // namespace zel::tool
