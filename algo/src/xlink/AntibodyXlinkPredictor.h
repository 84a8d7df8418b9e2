#pragma once

#include "common/stable/Export.h"

#include <QList>
#include <QString>

namespace zel::xlink {

/// Predicts the disulfide links of an antibody of two heavy and two light chains from the positions
/// of their cysteines (AntibodyCysteineMarker).
class ZEL_EXPORT AntibodyXlinkPredictor
{
public:
    /// A link between two cysteines. Chains: 0 and 1 the heavy ones, 2 and 3 the light ones.
    /// Positions count from 0.
    struct Link
    {
        int firstChain = 0;
        int firstPosition = 0;
        int secondChain = 0;
        int secondPosition = 0;

        bool operator==(const Link& other) const = default;
    };

    /// The links within each chain, chain by chain; then those of the hinges, one for one, what is
    /// left over staying free; then those of heavy chain 0 to light chain 2 and of 1 to 3. Where no
    /// heavy chain has a cysteine of its own for that, both give the first of their hinge. Links
    /// with a cysteine that was not found are left out.
    static QList<Link> predict(const QString& heavy1,
                               const QString& heavy2,
                               const QString& light1,
                               const QString& light2);
};

} // namespace zel::xlink
