#pragma once

#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
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

/// The cosine of two series of heights, pair by pair; 0 when one of them holds nothing but 0.
class CosineSum
{
public:
    void add(double observed, double theory)
    {
        m_product += observed * theory;
        m_observedSquare += observed * observed;
        m_theorySquare += theory * theory;
    }

    double cosine() const
    {
        const double norm = std::sqrt(m_observedSquare * m_theorySquare);
        return norm > 0.0 ? m_product / norm : 0.0;
    }

private:
    double m_product = 0.0;
    double m_observedSquare = 0.0;
    double m_theorySquare = 0.0;
};

} // namespace zel
