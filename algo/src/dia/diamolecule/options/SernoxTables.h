#pragma once

#include "chemical_model/FragmentType.h"
#include "common/stable/Export.h"

#include <QList>
#include <QMap>
#include <QSet>
#include <QString>

namespace zel {

// The choices that a search offers, as constants. Lists of one subject have one index.

/// Rules of cleavage by residue: true cuts, false marks a place that is no true cleavage point; a
/// residue that is not there has no opinion. See digestSequence.
using CleavageRules = QMap<QString, bool>;

/// "Trypsin @ R,K | C-term", "LysC @ K | C-term", ..., "Non-specific", "None".
ZEL_EXPORT extern const QList<QString> SernoxEnzymeNames;
/// Of each enzyme, for the residue before a place.
ZEL_EXPORT extern const QList<CleavageRules> SernoxEnzymeAfterRules;
/// Of each enzyme, for the residue after a place.
ZEL_EXPORT extern const QList<CleavageRules> SernoxEnzymeBeforeRules;

/// "CID low energy", "TOF-TOF", ...
ZEL_EXPORT extern const QList<QString> SernoxFragmentationTypeNames;
/// The fragments that each of them makes.
ZEL_EXPORT extern const QList<QSet<chem::FragmentType>> SernoxFragmentationTypeFragments;

/// "1% FDR", "2% FDR", "No cuts".
ZEL_EXPORT extern const QList<QString> SernoxProteinFdrNames;

} // namespace zel
