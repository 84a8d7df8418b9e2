#include "xlink/AntibodyCysteineMarker.h"

namespace zel::xlink {

namespace {

/// Where the variable domain's first and second cysteine are looked for from.
constexpr int kFirstFrom = 15;
constexpr int kSecondFrom = 75;
/// How far the next domain's first cysteine lies beyond the variable domain's second, at least.
constexpr int kDomainGap = 20;
/// Cysteines nearer to each other than this are no pair of a domain.
constexpr int kLeastLoop = 40;

int firstFrom(const QString& sequence, int from)
{
    return static_cast<int>(sequence.indexOf(u'C', from));
}

/// The last one before a position.
int lastBefore(const QString& sequence, int position)
{
    return static_cast<int>(sequence.lastIndexOf(u'C', position - 1));
}

int last(const QString& sequence)
{
    return static_cast<int>(sequence.lastIndexOf(u'C'));
}

} // namespace

AntibodyCysteineMarker::LightChainCysteines AntibodyCysteineMarker::markLightChain(
    const QString& sequence)
{
    LightChainCysteines found;
    auto& positions = found.positions;
    positions[4] = last(sequence);
    for (const std::size_t i : {3U, 2U, 1U}) {
        positions[i] = lastBefore(sequence, positions[i + 1]);
    }
    positions[0] = firstFrom(sequence, kFirstFrom);
    return found;
}

AntibodyCysteineMarker::HeavyChainCysteines AntibodyCysteineMarker::markHeavyChain(
    const QString& sequence)
{
    HeavyChainCysteines found;
    auto& positions = found.positions;
    positions[7] = last(sequence);
    for (const std::size_t i : {6U, 5U, 4U}) {
        positions[i] = lastBefore(sequence, positions[i + 1]);
    }
    positions[0] = firstFrom(sequence, kFirstFrom);
    positions[1] = firstFrom(sequence, kSecondFrom);
    positions[2] = firstFrom(sequence, positions[1] + kDomainGap);
    positions[3] = firstFrom(sequence, positions[2] + 1);
    if (positions[3] - positions[2] < kLeastLoop) {
        found.lightChainLink = positions[2];
        positions[2] = positions[3];
        positions[3] = firstFrom(sequence, positions[2] + 1);
    }
    for (int hinge = firstFrom(sequence, positions[3] + 1); hinge >= 0 && hinge < positions[4];
         hinge = firstFrom(sequence, hinge + 1)) {
        found.hinge.append(hinge);
    }
    return found;
}

} // namespace zel::xlink
