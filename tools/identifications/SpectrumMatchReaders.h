#pragma once

#include "common/stable/Result.h"
#include "tools/identifications/MatchReport.h"
#include "tools/identifications/SpectrumMatch.h"

namespace zel::identifications {

// The readers behind readSpectrumMatches, which see.

enum class IdentFormat { MzIdentMl, PepXml };

Result<SpectrumMatchFile> readMatchTable(const QString& path,
                                         const QString& scoreName,
                                         MatchReport* report);

Result<SpectrumMatchFile> readIdentData(const QString& path,
                                        IdentFormat format,
                                        const QString& scoreName,
                                        MatchReport* report);

} // namespace zel::identifications
