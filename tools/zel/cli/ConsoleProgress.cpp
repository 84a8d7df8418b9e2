#include "tools/zel/cli/ConsoleProgress.h"

#include "tools/zel/cli/Interruption.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace zel::tool {

ConsoleProgress::ConsoleProgress()
    : m_isTerminal(isatty(STDERR_FILENO) != 0)
{}

ConsoleProgress::~ConsoleProgress()
{
    finish();
}

bool ConsoleProgress::isCanceled() const
{
    return isInterrupted();
}

void ConsoleProgress::beginPhase(int stepCount)
{
    if (m_depth++ == 0) {
        m_goesByScans = m_goesByScans && m_scans.done == 0;
        begin(&m_phase, stepCount);
    }
}

void ConsoleProgress::setText(const QString& text)
{
    m_text = text;
}

void ConsoleProgress::stepDone()
{
    if (m_depth == 1 && !m_goesByScans) {
        advance(&m_phase);
    }
}

void ConsoleProgress::endPhase()
{
    --m_depth;
}

void ConsoleProgress::beginScans(qsizetype count, const QString& title)
{
    m_text = title;
    m_goesByScans = true;
    begin(&m_scans, count);
}

void ConsoleProgress::scanRead()
{
    if (m_goesByScans) {
        advance(&m_scans);
    }
}

void ConsoleProgress::endScans()
{
    m_goesByScans = false;
}

void ConsoleProgress::finish()
{
    if (m_barIsShown) {
        std::fputs("\r\033[K", stderr);
        m_barIsShown = false;
    }
}

void ConsoleProgress::begin(Steps* steps, qsizetype count)
{
    *steps = {count, 0};
    m_shownPercent = -1;
}

/// Counts a step, and shows it where that makes a difference.
void ConsoleProgress::advance(Steps* steps)
{
    if (steps->done >= steps->count) {
        return;
    }
    ++steps->done;
    const auto percent = static_cast<int>(100 * steps->done / steps->count);
    constexpr int lineStepPercent = 25;
    if (percent == m_shownPercent ||
        (!m_isTerminal && percent / lineStepPercent == m_shownPercent / lineStepPercent &&
         m_shownPercent >= 0)) {
        return;
    }
    m_shownPercent = percent;
    const std::string text = m_text.toStdString();
    if (!m_isTerminal) {
        std::fprintf(stderr, "%s: %d %%\n", text.c_str(), percent);
        return;
    }
    constexpr int barWidth = 30;
    const int filled = barWidth * percent / 100;
    const std::string bar = std::string(static_cast<std::size_t>(filled), '#') +
                            std::string(static_cast<std::size_t>(barWidth - filled), ' ');
    std::fprintf(stderr, "\r\033[K%s [%s] %3d %%", text.c_str(), bar.c_str(), percent);
    m_barIsShown = true;
}

} // namespace zel::tool
