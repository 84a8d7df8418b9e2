#pragma once

#include "chemical_model/Elements.h"
#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <QVarLengthArray>

#include <span>

namespace chem {

/// Aggregated (nominal-mass) isotope distributions: the isotopologues of one mass number count as
/// one peak.
///
/// The distribution is the product of one polynomial power for each element. A power p(x)^n
/// follows from the recurrence that n p' q = p q' gives for q = p^n,
///
///     q_0 = p_0^n,   q_k = 1/(k p_0) sum_{i=1..min(k,m)} (i n - (k - i)) p_i q_{k-i},
///
/// which is exact and holds for fractional n too (Euler; the same idea for whole molecules is
/// BRAIN, Claesen et al. 2012, doi:10.1007/s13361-011-0326-2). As long as k <= n all its terms are
/// positive, so nothing cancels; beyond that, whole powers are multiplied out instead. Works on
/// scaled values, so that p_0^n may be far below the smallest double.
///
/// All functions are pure and safe to call from several threads.

/// How many atoms of one element; may be fractional.
struct ElementAmount
{
    Element element;
    double count;
};

/// Probabilities by number of added mass units. Peptide patterns need no heap.
using IsotopeProbabilities = QVarLengthArray<double, 64>;

/// Most peaks that a distribution may need; a molecule of some 15 MDa.
inline constexpr int kMaxIsotopePeakCount = 10000;

/// Writes the probabilities of the isotopologues by mass number, from the one of the lightest
/// isotopes upwards. They sum to 1; what lies beyond the end is below 1e-9. A fractional amount can
/// give a tiny negative value far out, which is written as 0.
/// \return kBadParameterError for a count that is negative or not finite, or for a distribution of
///         more than kMaxIsotopePeakCount peaks
ZEL_EXPORT zel::Error aggregatedIsotopeDistribution(std::span<const ElementAmount> composition,
                                                    IsotopeProbabilities* probabilities);

/// Cuts a pattern after the peak that takes its running sum above 99.99 % of the whole, but not
/// before the fifth; peaks of probability 0 at its end go. With `normalize` what is left sums to 1.
ZEL_EXPORT void cutIsotopePattern(IsotopeProbabilities* probabilities, bool normalize);

} // namespace chem
