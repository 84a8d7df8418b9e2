#pragma once

#include "peptides/PeptidesList.h"
#include "tools/zel/xlink/AntibodyChains.h"
#include "xlink/AntibodyXlinkPredictor.h"

#include <QList>

namespace zel::tool {

/// What trypsin (which spares places before P) leaves of an antibody whose links are whole: for
/// each set of peptides that links hold together, its first peptide, with the others as
/// modifications of their mass, and with the two hydrogens that each link costs. Sets of the same
/// peptides stand once.
PeptidesList linkedPeptides(const AntibodyChains& chains,
                            const QList<xlink::AntibodyXlinkPredictor::Link>& links);

} // namespace zel::tool
