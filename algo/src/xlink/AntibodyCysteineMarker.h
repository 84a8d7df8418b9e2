#pragma once

#include "common/stable/Export.h"

#include <QList>
#include <QString>

#include <array>
#include <optional>

namespace zel::xlink {

/// Finds the cysteines of an antibody's chains that form disulfide links, by position alone: no
/// motif, no table, only the letter C in upper case.
///
/// Positions count from 0; -1 stands for a cysteine that was not found. A search backwards from
/// before the start of the chain goes on at its end, as QString::lastIndexOf has it, so a chain
/// with fewer cysteines than the pattern needs can have one of them in two places.
class ZEL_EXPORT AntibodyCysteineMarker
{
public:
    struct HeavyChainCysteines
    {
        /// Four pairs within the chain: (0, 1), (2, 3), (4, 5), (6, 7).
        std::array<int, 8> positions = {-1, -1, -1, -1, -1, -1, -1, -1};
        /// The one that links to the light chain, where there is one before the hinge.
        std::optional<int> lightChainLink;
        /// Those between the pairs (2, 3) and (4, 5), ascending.
        QList<int> hinge;
    };

    struct LightChainCysteines
    {
        /// Two pairs within the chain, (0, 1) and (2, 3), and the one that links to the heavy
        /// chain.
        std::array<int, 5> positions = {-1, -1, -1, -1, -1};
    };

    static HeavyChainCysteines markHeavyChain(const QString& sequence);
    static LightChainCysteines markLightChain(const QString& sequence);
};

} // namespace zel::xlink
