#pragma once

#include "common/stable/Error.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace zel::simulate {

/// What a simulated run holds of one peptide ion, before noise and limits of intensity.
struct TrueIon
{
    int sample = 0; ///< counts from 0; from 1 in the table, as in the names of the runs
    QString sequence;
    double mass = 0.0; ///< neutral, monoisotopic, Da
    int charge = 0;
    double mz = 0.0; ///< of the monoisotopic peak
    // Retention in minutes; the limits are at 1 % of the apex height.
    double rtStart = 0.0;
    double rtApex = 0.0;
    double rtEnd = 0.0;
    double rtReference = 0.0; ///< apex without drift and jitter, the same in all samples
    // 1/K0 in V s/cm2; the limits are at 1 % of the apex height. All 0 without mobility.
    double mobilityStart = 0.0; ///< the lower one
    double mobilityApex = 0.0;
    double mobilityEnd = 0.0;
    double apexIntensity = 0.0;     ///< counts of all isotopes, in a scan or frame at the apex
    double area = 0.0;              ///< counts * min, all isotopes
    QList<double> isotopeFractions; ///< from the monoisotopic peak up; sum 1
};

/// Writes the ions as a table: tab separated, a header line, digits enough to read the same doubles
/// back; the isotope fractions are one column, separated by commas. The file is replaced as a whole
/// or not at all.
/// \return kFileOpenError, or kError when it cannot be written to the end
Error writeTruth(const QString& path, const QList<TrueIon>& ions);

/// Writes windows as `zel xic --windows` reads them: one for each ion, the strongest first, of 10
/// ppm around its m/z and of the times between its limits, over all samples that hold it.
/// \return as writeTruth
Error writeWindows(const QString& path, const QList<TrueIon>& ions);

/// Writes spectrum matches as `zel targeted --psms` reads them: one for each ion and sample, at its
/// apex.
/// \param runs  the files of the samples, in their order
/// \return as writeTruth
Error writeMatches(const QString& path, const QList<TrueIon>& ions, const QStringList& runs);

} // namespace zel::simulate
