#pragma once

#include "tools/identifications/SpectrumMatchFile.h"

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
