#pragma once

#include "common/stable/Export.h"

#include <QList>
#include <QMap>
#include <QString>

#include <string>

namespace zel {

/// A peptide and its place in a protein. Positions count from 0.
struct ZEL_EXPORT BasicPeptide
{
    qint64 start = 0; ///< first residue
    qint64 end = 0;   ///< last residue
    QString sequence;
    qint64 missedCleavages = 0; ///< cleavage points inside the peptide
    qint64 proteinLength = 0;   ///< residues

    bool operator==(const BasicPeptide& other) const = default;
};

// All of these touch their arguments only, and may be called from several threads at once. Residues
// are compared as they stand: upper-case the sequence first.

/// Cuts a protein by rules for the residues on both sides of a place. A place is cut when a rule of
/// its two residues says true. When another rule there says false (K before P in a tryptic digest),
/// the place is no true cleavage point: joining across it is no missed cleavage.
///
/// Pieces longer than `maxLength` are left out, but for the last one; what lies on both sides of
/// such a piece counts as adjacent, and a peptide joined there spans it.
/// \param beforeRules         for the residue after a place, the one before which the cut would be
/// \param afterRules          for the residue before a place
/// \param maxMissedCleavages  in one peptide
/// \param minLength           takes no part; the caller filters
/// \param peptides            replaced: the pieces in their order, then pairs of neighbours, then
///                            threes, ...
ZEL_EXPORT void digestSequence(const QString& sequence,
                               const QMap<QString, bool>& beforeRules,
                               const QMap<QString, bool>& afterRules,
                               int maxMissedCleavages,
                               int minLength,
                               int maxLength,
                               QList<BasicPeptide>& peptides);

/// Appends every part of the sequence of `minLength` to `maxLength` residues.
ZEL_EXPORT void digestNonSpecific(const QString& sequence,
                                  int minLength,
                                  int maxLength,
                                  QList<BasicPeptide>& peptides);

/// What the ends of a protein add to its peptides: peptides that lost the first methionine, then,
/// of those and all the others, the ones clipped 1 to 3 residues before the protein's last one.
/// Repetitions stay.
/// \param peptides  of one protein
/// \return the additional ones only
ZEL_EXPORT QList<BasicPeptide> additionalPeptides(const QList<BasicPeptide>& peptides);

/// "17_P12345" for index 17.
ZEL_EXPORT std::string decorateAccessionWithIndex(const std::string& accession, int index);

/// What follows the first "_"; the text itself when it has none.
ZEL_EXPORT std::string stripIndexFromDecoratedAccession(const std::string& decorated);

} // namespace zel
