#pragma once

#include "common/stable/Result.h"
#include "tools/simulate/EmgPeak.h"
#include "tools/simulate/SimulationSettings.h"

#include <QList>
#include <QString>

#include <vector>

namespace zel::simulate {

/// One charge state of a peptide.
struct SimulatedIon
{
    int charge = 0;
    double mz = 0.0;       ///< of the monoisotopic peak
    double share = 0.0;    ///< of the peptide's signal
    double mobility = 0.0; ///< 1/K0, V s/cm2; 0 without mobility
};

/// A peptide with what all samples have in common.
struct SimulatedPeptide
{
    QString sequence;
    double mass = 0.0;                 ///< neutral, monoisotopic, Da
    QList<double> isotopeFractions;    ///< from the monoisotopic peak up, sum 1
    double apexMinutes = 0.0;          ///< in sample 0, without jitter
    EmgPeak shape = EmgPeak(1.0, 0.0); ///< in minutes
    double area = 0.0;                 ///< counts * min, all ions and isotopes
    std::vector<SimulatedIon> ions;    ///< ascending in charge; may be none
};

/// A run must be longer than this, minutes, or it cannot hold a whole peak in every sample.
double leastRunMinutes(const SimulationSettings& settings);

/// Draws the peptides of a simulation with their properties.
/// \return kBadParameterError when the run is too short for a peak and the differences between
///         samples, and the failures of choosePeptides
Result<std::vector<SimulatedPeptide>> drawPeptides(const SimulationSettings& settings);

/// Mobility 1/K0, V s/cm2, of a peptide whose collision cross section follows the usual trend with
/// mass, in nitrogen at 305 K, by the Mason-Schamp equation (Revercomb & Mason 1975).
double typicalMobility(double mass, int charge);

} // namespace zel::simulate
