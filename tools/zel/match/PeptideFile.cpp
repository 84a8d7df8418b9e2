#include "tools/zel/match/PeptideFile.h"

#include "chemical_model/Residues.h"
#include "tools/zel/cli/Messages.h"

#include <algorithm>
#include <cmath>

namespace zel::tool {

Result<PeptidesList> peptidesOfJson(const QString& path, const QByteArray& text)
{
    PeptidesList peptides;
    const Error e = peptides.deserialize(QString::fromUtf8(text));
    if (e.hasError()) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         e.equals(kBadParameterError)
                             ? QStringLiteral("%1 is no JSON array of peptides").arg(path)
                             : QStringLiteral("%1, peptide %2: %3")
                                   .arg(path, QString::number(peptides.size() + 1), e.message()));
    }
    return peptides;
}

PeptidesList withMasses(const QString& path, const PeptidesList& peptides)
{
    PeptidesList kept;
    for (const Peptide& peptide : peptides.peptidesList()) {
        const bool hasResidues = std::ranges::all_of(
            peptide.sequence, [](QChar c) { return c.isUpper() && chem::residueMass(c) > 0.0; });
        const double mass = peptide.mass();
        if (hasResidues && std::isfinite(mass) && mass > 0.0) {
            kept.addPeptide(peptide);
        }
    }
    if (const int lost = peptides.size() - kept.size(); lost > 0) {
        tell(QStringLiteral("%1: %2 peptides with letters that stand for no residue, or without a "
                            "positive mass, are left out")
                 .arg(path)
                 .arg(lost));
    }
    return kept;
}

} // namespace zel::tool
