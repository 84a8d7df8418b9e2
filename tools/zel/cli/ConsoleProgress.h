#pragma once

#include "tools/sources/decorators/ScanProgress.h"

namespace zel::tool {

/// Shows on standard error how far the work is: a bar when that is a terminal, a line at each
/// quarter otherwise. It goes by the scans read where their number is known, until a phase begins
/// after them, and else by the outermost phase. Canceled by the signals of Interruption.h. Only one
/// object may exist at a time.
class ConsoleProgress : public msreader::ScanProgress
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
    void beginScans(qsizetype count, const QString& title) override;
    void scanRead() override;
    void endScans() override;

    /// Removes the bar from the terminal.
    void finish();

private:
    /// Work of known length.
    struct Steps
    {
        qsizetype count = 0;
        qsizetype done = 0;
    };

    void begin(Steps* steps, qsizetype count);
    void advance(Steps* steps);

    bool m_isTerminal;
    bool m_barIsShown = false;
    int m_depth = 0; ///< of open phases
    Steps m_phase;   ///< the outermost
    Steps m_scans;
    bool m_goesByScans = false;
    int m_shownPercent = -1;
    QString m_text = QStringLiteral("Working");
};

} // namespace zel::tool
