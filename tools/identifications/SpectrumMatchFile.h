#pragma once

#include "common/stable/Result.h"
#include "tools/identifications/MatchReport.h"
#include "tools/identifications/SpectrumMatch.h"

#include <QString>

namespace zel::identifications {

/// Reads the matches of a table (docs/file-formats.md has the columns), mzIdentML or pepXML file,
/// plain or gzip-compressed; the content shows which it is. Matches that cannot be used go to the
/// report, as do, of mzIdentML and pepXML, those of a rank other than the first, below the file's
/// threshold, or of decoys only.
/// \param scoreName  the score to take: a column, or the name or accession of a term; empty: the
///                   column "score", or the first score of a search engine that a match has
/// \return kFileOpenError or kFileFormatError
Result<SpectrumMatchFile> readSpectrumMatches(const QString& path,
                                              const QString& scoreName,
                                              MatchReport* report);

} // namespace zel::identifications
