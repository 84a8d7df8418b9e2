#pragma once

#include "common/stable/Progress.h"
#include "common/stable/Result.h"
#include "tools/simulate/SimulationSettings.h"
#include "tools/simulate/Truth.h"
#include "tools/sources/InMemoryScan.h"

#include <QList>

namespace zel::simulate {

/// One simulated run and what it holds.
struct SimulatedRun
{
    int sampleIndex = 0;
    /// In acquisition order, `d1` 1, 2, 3, ...; with mobility each `d1` is a frame of scans with
    /// `d2` 1, 2, 3, ..., of the mobilities that the settings give, empty ones included.
    QList<msreader::InMemoryScan> scans;
    /// By peptide, then charge; the ions that the sample lacks are not in it.
    QList<TrueIon> truth;
};

/// Simulates the LC-MS run of one sample.
///
/// Peptides elute as EMG peaks, each in its charge states and with its isotope pattern; background
/// ions and stray peaks are added; ScanRenderer makes the recorded scans out of that. Equal
/// settings give equal runs, whichever sample is made first and on any platform, to within the
/// rounding of its exp and log.
///
/// Fragment spectra of isolation windows (DIA) belong between the frames of this loop, from the
/// same eluting ions through chem::generateLinearFragments.
/// \param progress  one step for each hundred frames; may be null
/// \return kBadParameterError for settings that make no sense or a sample that is not theirs, the
///         failures of the FASTA file, kOperationCanceledError
Result<SimulatedRun> simulateRun(const SimulationSettings& settings,
                                 int sampleIndex,
                                 const QSharedPointer<ProgressBarInterface>& progress = {});

/// Simulates the runs of all samples.
Result<QList<SimulatedRun>> simulate(const SimulationSettings& settings,
                                     const QSharedPointer<ProgressBarInterface>& progress = {});

} // namespace zel::simulate
