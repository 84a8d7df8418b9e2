#pragma once

#include "common/core_mini/src/algo/isotopes/MolecularFormula.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QList>

namespace zel {

/// Isotope patterns of an average molecule of a given mass: as many units of one formula as the
/// mass holds, not rounded to whole atoms. See chemical_model/IsotopeDistribution.h for the method,
/// which is exact for fractional atom counts; a few microseconds a pattern.
///
/// Once `init` is done, the model does not change and serves any number of threads.
class ZEL_EXPORT AveragineIsotopeModel
{
public:
    /// A model that must be given its formula by `init`.
    AveragineIsotopeModel() = default;

    /// Sets the unit, such as Senko's averagine or any multiple of it.
    /// \return kBadParameterError when a count is negative or not finite or all are 0
    Error init(const MolecularFormula& averagine);

    /// Writes the probabilities of the isotopologues with 0, 1, 2, ... 13C, which sum to 1, until
    /// 99.99 % of the distribution is covered, at least five. Below 20 Da there is one of 1.0.
    /// \param mass    neutral monoisotopic mass, Da
    /// \param ratios  replaced; empty after a failure
    /// \return the index of the most intense, the first on ties; kError before `init`,
    ///         kBadParameterError for a mass that is negative, not finite or beyond about 15 MDa
    Result<int> peakIntensityRatiosFromMass(double mass, QList<double>* ratios) const;

    /// The model of Senko's averagine C4.9384 H7.7583 N1.3577 O1.4773 S0.0417 (Senko, Beu &
    /// McLafferty 1995, doi:10.1016/1044-0305(95)00017-8), shared and ready to use.
    static const AveragineIsotopeModel& senko();

private:
    MolecularFormula m_averagine;
    double m_unitMass = 0.0; ///< Da; 0 before `init`
};

} // namespace zel
