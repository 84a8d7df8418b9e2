#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <Eigen/SparseCore>

#include <memory>

class QString;

namespace zel {

class DenseNetwork;

/// Tells which isotope of its cluster a peak is, by a network that was trained on simulated
/// clusters (tools/training). A value; copies share the network. See ChargeDeterminatorNN for what
/// a slice is.
class ZEL_EXPORT MonoisotopeDeterminatorNN
{
public:
    /// Loads the network, which stands in the same file as that of ChargeDeterminatorNN; failures
    /// as there.
    Error init(const QString& networkFilePath);

    /// Isotope steps from the monoisotopic peak up to the peak in the middle of the slice, 0 to 15.
    /// No more than leave a mass of 200 Da. 0 before `init`, for a slice of another length, and for
    /// a charge outside 1 to 10.
    /// \param profile  a slice
    /// \param mz       m/z of the peak
    /// \note Some microseconds. Free of state: safe to call from several threads.
    int determineMonoisotopeOffset(const Eigen::SparseVector<double, 0, int>& profile,
                                   double mz,
                                   int charge) const;

private:
    std::shared_ptr<const DenseNetwork> m_network;
};

} // namespace zel
