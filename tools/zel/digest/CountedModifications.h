#pragma once

#include "peptides/Modification.h"

#include <CLI/CLI.hpp>
#include <QList>
#include <QString>

#include <string>

namespace zel::tool {

/// A modification that peptides may carry, by how many of its sites they have.
struct ModificationRule
{
    Modification modification; ///< its site: residues, "n" and "c" for the ends of a peptide
    int most = 1;              ///< copies in one peptide
};

/// Accepts "NAME:SITES:MASS", and ":MOST" after it where `isVariable`.
CLI::Validator isModificationRule(bool isVariable);

/// The rule of a text that isModificationRule has accepted.
ModificationRule modificationRule(const std::string& text);

/// What keeps variable modifications from being used together; empty when nothing does.
QString variableFault(const QList<ModificationRule>& variable);

/// All that a peptide can carry by count: each fixed one on all of its sites and every combination
/// of counts of the variable ones, none first. Two variable ones never take one site; that of a
/// fixed one can take a variable one as well.
QList<Modifications> modifiedForms(const QString& sequence,
                                   const QList<ModificationRule>& fixed,
                                   const QList<ModificationRule>& variable);

/// "2xOxidation@M/31.98983;Acetyl@n/42.010565": counts, names, sites and what they add up to, Da.
QByteArray modificationsText(const Modifications& modifications);

} // namespace zel::tool
