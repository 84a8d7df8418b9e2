#pragma once

namespace zel::tool {

// How the tool ends on SIGINT (Ctrl-C), SIGTERM and SIGHUP. Those that its parent had it ignore, as
// nohup and shell jobs do, stay ignored.
//
// The first signal asks the command to end: isInterrupted() becomes true, which progress sinks and
// sources look at, and the command gives up all that is unfinished by itself. Where it cannot, as
// in a long call of a dependency, or on a second signal, the watching thread removes the unfinished
// outputs (tools/io/UnfinishedOutput.h) and ends the process. Both ways say the same and give the
// same exit code.

/// Starts the watching thread. To be called once, before any other thread starts.
void watchForSignals();

/// Whether a signal has asked for the end.
bool isInterrupted();

/// The exit code by the shell's convention: 128 plus the number of the signal, 130 for Ctrl-C.
int interruptedExitCode();

/// Says on standard error that the command was canceled; once, however often it is called.
void tellInterrupted();

} // namespace zel::tool
