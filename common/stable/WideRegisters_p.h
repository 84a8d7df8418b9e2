#pragma once

namespace zel {

/// Tells the processor that the upper halves of its vector registers hold nothing. Call it before
/// arithmetic that is to be fast where a QHash or QSet of strings was searched on the same thread:
/// on processors with VAES the qHash of Qt 6.4 leaves those halves in use, and until someone tidies
/// up, each SSE instruction has to carry them along (a convolution takes five times as long).
/// Changes no value; costs a few cycles.
void releaseWideRegisters();

} // namespace zel
