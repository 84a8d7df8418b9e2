#pragma once

#include "common/core_mini/src/algo/ImmutableFeatureFinderParameters.h"
#include "common/core_mini/src/algo/StoredEntries.h"
#include "common/stable/PhysicalConstants.h"

#include <algorithm>
#include <cmath>

namespace zel {

/// The places of a slice where the isotopes of one charge stand, step 0 being the peak in its
/// middle.
class IsotopeLattice
{
public:
    /// \param charge         at least 1
    /// \param toleranceBins  how far an entry may lie from its place
    IsotopeLattice(const StoredEntries& slice, int charge, double toleranceBins)
        : m_slice(slice)
        , m_spacingBins(spacingBins(charge))
        , m_toleranceBins(toleranceBins)
    {}

    /// Distance of two isotopes of this charge.
    static double spacingBins(int charge)
    {
        return kCarbonIsotopeSpacingDa * g_immutableFeatureFinderParameters.clusterMzHashFactor /
               charge;
    }

    /// The bin of a step, which need not be whole; may lie outside the slice.
    double place(double step) const
    {
        return g_immutableFeatureFinderParameters.clusterSliceCentre + step * m_spacingBins;
    }

    /// Whether the slice reaches to the step.
    bool covers(double step) const
    {
        return place(step) >= 0.0 &&
               place(step) <= 2.0 * g_immutableFeatureFinderParameters.clusterSliceHalfWidth;
    }

    /// The stored entries within the tolerance of a step.
    StoredEntries entriesAt(double step) const
    {
        return m_slice.between(static_cast<int>(std::ceil(place(step) - m_toleranceBins)),
                               static_cast<int>(std::floor(place(step) + m_toleranceBins)));
    }

    /// The greatest of them; 0 for none.
    double greatestAt(double step) const
    {
        const StoredEntries entries = entriesAt(step);
        return entries.size() == 0 ? 0.0 : std::max(0.0, *std::ranges::max_element(entries.values));
    }

private:
    StoredEntries m_slice;
    double m_spacingBins;
    double m_toleranceBins;
};

} // namespace zel
