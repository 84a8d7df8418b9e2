#pragma once

#include "common/core_mini/src/algo/EigenUtilities.h"
#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "feature_finder/frames/MatrixRows_p.h"
#include "feature_finder/records/Hill.h"

#include <QList>

#include <vector>

namespace zel {

/// What the search for the limits of hills goes by; see SettableFeatureFinderParameters.
struct HillSearchSettings
{
    double mzHashFactor;
    double ratioMz;
    double ratioD2;
    int d1; ///< number that the hills get
};

/// The heights along one row or column through an apex. Places that are not stored have height 0.
class HillProfile
{
public:
    /// \param apexIndex  a stored place
    HillProfile(const StoredEntries& entries, int apexIndex);

    /// \note O(1 + places between the apex and here that are not stored).
    double at(int index) const;

    /// The sum of the heights in [first, last].
    double sum(int first, int last) const;

private:
    StoredEntries m_entries;
    int m_apexIndex;
    std::ptrdiff_t m_apexPosition; ///< of the apex among the entries
};

/// Two places, both included.
struct HillLimits
{
    int low;
    int high;
};

/// Climbs down from an apex both ways.
/// \param apex    place of the apex
/// \param ratio   height relative to the apex at which a hill ends
/// \param first   the first of the `length` places that the search keeps to
/// \return (0, 0) when there are less than two places
HillLimits findHillLimits(
    const HillProfile& profile, int apex, double ratio, int first, int length);

/// The hills of the apexes at [from, to) of the list, in its order.
/// \param rows  the same matrix by rows
std::vector<HillD2> climbDown(const QList<EigenUtilities::MatrixApexIndex>& apexes,
                              qsizetype from,
                              qsizetype to,
                              const Eigen::SparseMatrix<double>& matrix,
                              const MatrixRows& rows,
                              const HillSearchSettings& settings);

/// Drops each hill whose apex lies within the limits of an earlier one that is not dropped itself.
/// \note O(n * hills whose limits come near an apex).
void removeHillsInsideEarlierOnes(std::vector<HillD2>* hills);

} // namespace zel
