// Any bytes as a FASTA file: an error, or sequences whose digest holds nothing but common residues.

#include "fuzz/FuzzFile.h"
#include "tools/simulate/PeptideSampling.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const FuzzFile file(data, size);
    const auto proteins = zel::simulate::readFasta(file.path());
    if (!proteins.isOk()) {
        return 0;
    }
    const QString residues = QStringLiteral("ACDEFGHIKLMNPQRSTVWY");
    for (const QString& peptide :
         zel::simulate::digest(proteins.value(), zel::simulate::SimulationSettings())) {
        if (peptide.size() < 7 || peptide.size() > 30 ||
            !std::ranges::all_of(peptide, [&](QChar c) { return residues.contains(c); })) {
            std::abort();
        }
    }
    return 0;
}
