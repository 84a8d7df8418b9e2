#pragma once

#include "tools/sources/mzml/MzmlDataSource.h"

namespace CLI {
class App;
}

namespace zel::tool {

// How commands open the files of runs, and the options by which users choose among their scans.

using RunFile = QSharedPointer<msreader::MzmlDataSource>;

/// Declares --polarity and --faims.
void addRunSelection(CLI::App& command, msreader::RunSelection& selection);

/// Declares --isolation, for commands that can take fragment scans.
void addIsolationSelection(CLI::App& command, msreader::RunSelection& selection);

/// Opens a run. What was repaired is said on standard error.
Result<RunFile> openRun(const QString& path, const msreader::RunSelection& selection = {});

/// The same for a command that adds up scans of this level, which must not be of several kinds.
/// \return kBadParameterError when the run has none of the level, or a mix of polarities,
/// compensation voltages or, of fragment scans, isolation windows; the message names the option
/// that chooses
Result<RunFile> openRunOfOneKind(const QString& path,
                                 const msreader::RunSelection& selection,
                                 int msLevel);

} // namespace zel::tool
