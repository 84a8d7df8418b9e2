#pragma once

#include "common/stable/Result.h"
#include "tools/identifications/MatchReport.h"
#include "tools/identifications/SpectrumMatch.h"
#include "tools/io/InputFile.h"

namespace zel::identifications {

// The readers that readSpectrumMatches calls; see there.

enum class IdentFormat { MzIdentMl, PepXml };

Result<SpectrumMatchFile> readMatchTable(io::InputFile& input,
                                         const QString& scoreName,
                                         MatchReport* report);

Result<SpectrumMatchFile> readIdentData(io::InputFile& input,
                                        IdentFormat format,
                                        const QString& scoreName,
                                        MatchReport* report);

} // namespace zel::identifications
