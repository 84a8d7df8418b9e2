#pragma once

#include "common/ms_types/MsDataTypes.h"
#include "common/stable/Error.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace zel::simulate {

/// How the width of a peak in m/z depends on m/z.
enum class ResolutionModel {
    Orbitrap,     ///< resolving power falls with the square root of m/z
    TimeOfFlight, ///< resolving power is the same everywhere
};

/// A setting that makes no sense, and why: "must be at most 3, but is 5".
struct SettingFault
{
    const char* name; ///< of the field
    QString reason;
};

/// What a simulated run is made of. The defaults are a run of half an hour on an Orbitrap with 500
/// tryptic peptides.
struct SimulationSettings
{
    /// Equal settings give equal runs; other seeds give other runs.
    std::uint64_t seed = 1;
    /// Runs of the same peptides, see below for what differs between them.
    int sampleCount = 1;

    // Peptides.

    /// Proteins that are digested with trypsin; empty: random tryptic peptides.
    QString fastaPath;
    /// How many peptides there are; from a FASTA file at most so many, chosen at random.
    int peptideCount = 500;
    /// Missed cleavages, for a FASTA file.
    int missedCleavages = 1;
    int minPeptideLength = 7;
    int maxPeptideLength = 30;
    /// How much later an isomer of each peptide elutes, in widths at half height; 0: there are no
    /// isomers. An isomer has the same amount, up to what differs between samples.
    double isomerDistance = 0.0;

    // Ions. A peptide is seen in the charge states that get at least 5 % of its signal and whose
    // isotopes all lie in the m/z range.

    int minCharge = 1;
    int maxCharge = 5;
    /// The acquired range, m/z.
    double mzStart = 350.0;
    double mzEnd = 1500.0;
    /// Median over the peptides of the intensity at the apex, all charges and isotopes together.
    double medianApexIntensity = 1e7;
    /// Standard deviation of the logarithm (base 10) of that intensity.
    double intensityDecades = 0.7;

    // Chromatography.

    double startMinutes = 0.0;
    double endMinutes = 30.0;
    double scanIntervalSeconds = 1.0;
    /// EMG shape of a median peak: standard deviation of the Gaussian, time constant of the tail.
    /// The scan interval should not exceed the former, or areas are no longer those of the truth.
    double peakSigmaSeconds = 5.0;
    double peakTailSeconds = 3.0;
    /// Standard deviation over the peptides of the logarithm (base e) of the width.
    double peakWidthSpread = 0.2;

    // Differences between samples. Sample 0 has no drift.

    /// Greatest smooth shift of the retention times, minutes; at most a tenth of the run.
    double driftMinutes = 0.5;
    /// Standard deviation of what a peptide deviates from that shift.
    double retentionJitterSeconds = 1.0;
    /// Standard deviation of the logarithm (base e) of a peptide's amount.
    double abundanceSpread = 0.1;
    /// Share of the peptides that a sample lacks.
    double missingFraction = 0.05;

    // Ion mobility.

    /// Mobility scans in a frame; 0: no mobility, a frame is one scan.
    int mobilityScanCount = 0;
    /// Mobility 1/K0 of the first and of the last scan of a frame, V s/cm2; may fall or rise, but
    /// only runs whose mobility rises can be written as files.
    double firstMobility = 0.6;
    double lastMobility = 1.6;
    /// Standard deviation of a mobility peak, V s/cm2; at least the step between two scans.
    double mobilitySigma = 0.01;

    // Instrument.

    /// Profile points are the ions counted in their bin: those of one peak sum up to what its
    /// centroid would have.
    msreader::PeakPickingFilter scanKind = msreader::PeakPickingFilter::Centroid;
    ResolutionModel resolutionModel = ResolutionModel::Orbitrap;
    /// Full width at half maximum is m/z over this; for `Orbitrap` at m/z 200.
    double resolvingPower = 60000.0;
    double profilePointsPerFwhm = 5.0;
    /// Peaks, or profile points, below this are not recorded.
    double minIntensity = 5000.0;

    // Noise.

    /// Standard deviation of the m/z of a peak in one scan.
    double mzNoisePpm = 1.5;
    /// Standard deviation of the logarithm (base e) of the intensity of a peak in one scan.
    double intensityNoise = 0.05;
    /// Intensity that one ion gives, for counting (Poisson) noise; 0: no such noise.
    double intensityPerIon = 1000.0;
    /// Ions of the solvent and its impurities, there all the time.
    int backgroundIonCount = 200;
    /// Their median intensity in a scan or frame; spread like that of peptides.
    double backgroundIonIntensity = 1e5;
    /// Stray peaks that are in one scan or frame only, on average.
    double strayPeakCount = 50.0;
    /// Their mean intensity; exponentially distributed.
    double strayPeakIntensity = 1e4;

    /// The same run without any noise or background, and without an intensity limit.
    SimulationSettings withoutNoise() const;

    /// The first setting that lies outside its limits or contradicts another one.
    std::optional<SettingFault> firstFault() const;
    /// \return kBadParameterError naming that setting
    Error check() const;

    double durationMinutes() const { return endMinutes - startMinutes; }
    /// The greatest `driftMinutes` of a run of this length.
    double maxDriftMinutes() const;
    double mobilityStep() const;
};

} // namespace zel::simulate
