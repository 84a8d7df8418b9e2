#include "tools/zel/cli/ConsoleProgress.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>

namespace zel::tool {

namespace {

volatile std::sig_atomic_t g_interrupted = 0;

void onInterrupt(int signal)
{
    g_interrupted = 1;
    std::signal(signal, SIG_DFL); // a second Ctrl-C is not asked for twice
}

} // namespace

ConsoleProgress::ConsoleProgress()
    : m_isTerminal(isatty(STDERR_FILENO) != 0)
{
    std::signal(SIGINT, onInterrupt);
}

ConsoleProgress::~ConsoleProgress()
{
    finish();
    std::signal(SIGINT, SIG_DFL);
}

bool ConsoleProgress::isCanceled() const
{
    return g_interrupted != 0;
}

void ConsoleProgress::beginPhase(int stepCount)
{
    if (m_depth++ == 0) {
        m_stepCount = stepCount;
        m_stepsDone = 0;
        m_shownPercent = -1;
    }
}

void ConsoleProgress::setText(const QString& text)
{
    m_text = text;
}

void ConsoleProgress::stepDone()
{
    if (m_depth == 1 && m_stepsDone < m_stepCount) {
        ++m_stepsDone;
        show(static_cast<int>(100LL * m_stepsDone / m_stepCount));
    }
}

void ConsoleProgress::endPhase()
{
    --m_depth;
}

void ConsoleProgress::finish()
{
    if (m_barIsShown) {
        std::fputs("\r\033[K", stderr);
        m_barIsShown = false;
    }
}

void ConsoleProgress::show(int percent)
{
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
