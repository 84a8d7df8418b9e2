#pragma once

#include "peptides/Modification.h"

namespace zel {

/// A candidate peptide: where it comes from and what it carries. A plain value.
struct ZEL_EXPORT Peptide
{
    QString protein;
    int proteinLength = 0; ///< residues
    QString sequence;
    int start = 0; ///< first position in the protein
    int end = 0;   ///< last position in the protein
    Modifications modifications;

    /// Neutral monoisotopic mass of the sequence and of its modifications, Da; see
    /// molcalc::calculateMassOfPeptide for what each letter counts.
    double mass() const;

    /// One member for each field, named as it is.
    QJsonObject toJson() const;

    /// Reads the members, all of which are needed, in the order of the fields.
    /// \return the failure of the first one that is missing or of another type; those read before
    ///         keep their new values
    Error fromJson(const QJsonObject& object);

    bool operator==(const Peptide& other) const = default;
};

} // namespace zel
