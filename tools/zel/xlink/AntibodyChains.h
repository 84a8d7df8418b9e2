#pragma once

#include "common/stable/Result.h"
#include "tools/io/FastaFile.h"

#include <QList>
#include <QString>

#include <array>

namespace zel::tool {

/// A chain of an antibody, under the name that outputs give it.
struct AntibodyChain
{
    QString label;    ///< "heavy 1"
    QString name;     ///< of the sequence, if it has one
    QString sequence; ///< capital letters of residues
    bool isHeavy = false;
};

/// In the order of xlink::AntibodyXlinkPredictor: two heavy, then two light.
using AntibodyChains = std::array<AntibodyChain, 4>;

/// The chains of one or two heavy and as many or fewer light ones; a single one stands for two.
/// Blanks are dropped and letters made upper case.
/// \return kBadParameterError for another number of chains, and for a character that is no residue,
///         with its position from 1
Result<AntibodyChains> antibodyChains(QList<io::FastaRecord> heavy, QList<io::FastaRecord> light);

/// The chains of a FASTA file: heavy where the header says "heavy", light where it says "light",
/// and where it says neither, heavy from 300 residues on.
/// \return as io::readFasta and above
Result<AntibodyChains> antibodyChainsOfFasta(const QString& path);

/// Says on standard error which chains have fewer cysteines than the pattern needs.
void tellOfFewCysteines(const AntibodyChains& chains);

} // namespace zel::tool
