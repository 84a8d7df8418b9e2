#include "tools/zel/cli/Interruption.h"

#include "tools/io/UnfinishedOutput.h"
#include "tools/zel/cli/Messages.h"

#include <QString>

#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <ctime>
#include <thread>

namespace zel::tool {

namespace {

/// How long a command may take to end by itself: the whole end is to take half a second.
constexpr timespec kGrace = {0, 350'000'000};

std::atomic<int> g_signal = 0;
std::atomic<bool> g_isTold = false;

bool isIgnored(int signal)
{
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t endingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(signal)) {
            sigaddset(&signals, signal);
        }
    }
    return signals;
}

/// Whether standard error takes a line without making us wait for its reader.
bool canTell()
{
    pollfd errors = {STDERR_FILENO, POLLOUT, 0};
    return poll(&errors, 1, 0) == 1 && (errors.revents & POLLOUT) != 0;
}

[[noreturn]] void endAtOnce()
{
    io::removeUnfinishedOutputs();
    if (canTell()) {
        tellInterrupted();
    }
    _exit(interruptedExitCode());
}

void watch(const sigset_t& signals)
{
    int signal = 0;
    if (sigwait(&signals, &signal) != 0) {
        return;
    }
    g_signal = signal;
    sigtimedwait(&signals, nullptr, &kGrace); // for the end of the grace, or a second signal
    endAtOnce();
}

} // namespace

void watchForSignals()
{
    const sigset_t signals = endingSignals();
    // Blocked here and so in all threads to come: they wait until the watching thread takes them.
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread(watch, signals).detach();
}

bool isInterrupted()
{
    return g_signal != 0;
}

int interruptedExitCode()
{
    constexpr int signalBase = 128;
    return signalBase + g_signal;
}

void tellInterrupted()
{
    if (!g_isTold.exchange(true)) {
        tell(QStringLiteral("canceled"));
    }
}

} // namespace zel::tool
