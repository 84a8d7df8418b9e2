#pragma once

#include "common/stable/Result.h"
#include "peptides/PeptidesList.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zel::tool {

/// How proteins become candidate peptides.
struct DigestOptions
{
    std::string enzyme = "trypsin";
    int missedCleavages = 1;
    int minLength = 7;
    int maxLength = 30;
    bool proteinEnds = false;
    bool everyPlace = false;
    std::vector<std::string> fixed;
    std::vector<std::string> variable;
};

/// Declares the options.
void addDigestOptions(CLI::App& command, DigestOptions& options);

/// Throws the CLI::ValidationError for options that do not go together.
void checkDigestOptions(const DigestOptions& options);

/// The peptides of a FASTA file, protein by protein: each sequence once, at its first place, or
/// with `everyPlace` wherever it is, and there in all its modified forms. Those with a letter that
/// has no mass are left out. What was left out or repaired is said on standard error.
/// \return kFileFormatError as io::readFasta; kBadParameterError when there are none
Result<PeptidesList> digestFasta(const QString& path, const DigestOptions& options);

} // namespace zel::tool
