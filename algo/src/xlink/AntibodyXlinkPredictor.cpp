#include "xlink/AntibodyXlinkPredictor.h"

#include "xlink/AntibodyCysteineMarker.h"

#include <algorithm>
#include <array>
#include <span>

namespace zel::xlink {

namespace {

using Heavy = AntibodyCysteineMarker::HeavyChainCysteines;
using Light = AntibodyCysteineMarker::LightChainCysteines;
using Links = QList<AntibodyXlinkPredictor::Link>;

constexpr int kLightChain = 2; ///< number of the first one

/// The pairs (0, 1), (2, 3), ... of one chain.
void appendPairs(int chain, std::span<const int> positions, Links* links)
{
    for (std::size_t i = 0; i + 1 < positions.size(); i += 2) {
        links->append({chain, positions[i], chain, positions[i + 1]});
    }
}

/// Where no heavy chain has a cysteine for its light chain before the hinge, the first of the hinge
/// is taken, provided that both have one.
void takeLinksFromHinges(std::array<Heavy, 2>* heavy)
{
    const bool isWanted = std::ranges::all_of(
        *heavy, [](const Heavy& chain) { return !chain.lightChainLink && !chain.hinge.isEmpty(); });
    if (isWanted) {
        for (Heavy& chain : *heavy) {
            chain.lightChainLink = chain.hinge.takeFirst();
        }
    }
}

void appendHingeLinks(const std::array<Heavy, 2>& heavy, Links* links)
{
    const qsizetype count = std::min(heavy[0].hinge.size(), heavy[1].hinge.size());
    for (qsizetype i = 0; i < count; ++i) {
        links->append({0, heavy[0].hinge[i], 1, heavy[1].hinge[i]});
    }
}

} // namespace

Links AntibodyXlinkPredictor::predict(const QString& heavy1,
                                      const QString& heavy2,
                                      const QString& light1,
                                      const QString& light2)
{
    std::array<Heavy, 2> heavy = {AntibodyCysteineMarker::markHeavyChain(heavy1),
                                  AntibodyCysteineMarker::markHeavyChain(heavy2)};
    const std::array<Light, 2> light = {AntibodyCysteineMarker::markLightChain(light1),
                                        AntibodyCysteineMarker::markLightChain(light2)};
    Links links;
    for (int i = 0; i < 2; ++i) {
        appendPairs(i, heavy[static_cast<std::size_t>(i)].positions, &links);
    }
    for (int i = 0; i < 2; ++i) {
        appendPairs(kLightChain + i, light[static_cast<std::size_t>(i)].positions, &links);
    }
    takeLinksFromHinges(&heavy);
    appendHingeLinks(heavy, &links);
    for (int i = 0; i < 2; ++i) {
        const auto chain = static_cast<std::size_t>(i);
        if (heavy[chain].lightChainLink) {
            links.append(
                {i, *heavy[chain].lightChainLink, kLightChain + i, light[chain].positions[4]});
        }
    }
    links.removeIf(
        [](const Link& link) { return link.firstPosition < 0 || link.secondPosition < 0; });
    return links;
}

} // namespace zel::xlink
