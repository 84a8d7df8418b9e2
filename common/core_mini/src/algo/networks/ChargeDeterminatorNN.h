#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <Eigen/SparseCore>

#include <memory>

class QString;

namespace zel {

class DenseNetwork;

/// Tells the charge of an isotope cluster from the spectrum around one of its peaks, by a network
/// that was trained on simulated clusters (tools/training). A value; copies share the network.
///
/// A slice is a spectrum in bins of 1 / clusterMzHashFactor Th, from clusterSliceHalfWidth bins
/// below the peak to as many above it; the peak stands at the index clusterSliceCentre
/// (g_immutableFeatureFinderParameters).
class ZEL_EXPORT ChargeDeterminatorNN
{
public:
    /// Loads the network.
    /// \param networkFilePath  as docs/file-formats.md describes the file; may lie in a Qt resource
    /// \return kFileOpenError for a file that cannot be opened, kFileFormatError for one that is
    ///         damaged or made for another version of the library; the network that was loaded
    ///         before stays then
    Error init(const QString& networkFilePath);

    /// \param profile  a slice; one of another length has no charge
    /// \param charge   1 to 10, or 0 when the peak belongs to no cluster that can be recognised,
    /// and
    ///                 before `init`. A charge has a probability of 0.5 at least, of 0.95 where no
    ///                 more than two isotopes stand in a row.
    /// \param score    the network's probability of its likeliest answer, 0 to 1, also where that
    ///                 was not probable enough
    /// \note Some microseconds. Free of state: safe to call from several threads.
    void determineCharge(const Eigen::SparseVector<double, 0, int>& profile,
                         int* charge,
                         double* score) const;

    /// The charge alone.
    int determineCharge(const Eigen::SparseVector<double, 0, int>& profile) const;

private:
    std::shared_ptr<const DenseNetwork> m_network;
};

} // namespace zel
