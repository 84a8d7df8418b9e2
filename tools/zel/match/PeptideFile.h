#pragma once

#include "common/stable/Result.h"
#include "peptides/PeptidesList.h"

#include <QByteArray>
#include <QString>

namespace zel::tool {

/// The peptides of a JSON text.
/// \return kFileFormatError naming the file, and the peptide and the key that are wrong
Result<PeptidesList> peptidesOfJson(const QString& path, const QByteArray& text);

/// Leaves out the peptides that no feature can be: those with a letter that is no capital letter of
/// a residue, and those without a positive mass. How many is said on standard error.
PeptidesList withMasses(const QString& path, const PeptidesList& peptides);

} // namespace zel::tool
