#pragma once

#include "common/stable/Result.h"
#include "tools/simulate/RandomStream.h"
#include "tools/simulate/SimulationSettings.h"

#include <QString>
#include <QStringList>

namespace zel::simulate {

/// A common residue, drawn with the frequency that it has in proteins.
QChar randomResidue(RandomStream& random);

/// The peptides of trypsin: cut after K and R but not before P (Keil rule). Those within the
/// limits of length and of missed cleavages, of the twenty common residues only, each once, in the
/// order of their first appearance.
QStringList digest(const QStringList& proteins, const SimulationSettings& settings);

/// The sequences of a FASTA file.
/// \return kFileOpenError, or kFileFormatError naming the line that is none of such a file
Result<QStringList> readFasta(const QString& path);

/// The peptides of a simulation: drawn from the FASTA file's digest, or random ones whose residues
/// have the frequencies that they have in proteins, up to the first K or R. Each once.
/// \return kBadParameterError when there are none, or not enough different random ones
Result<QStringList> choosePeptides(const SimulationSettings& settings);

} // namespace zel::simulate
