#pragma once

#include <Eigen/SparseCore>

namespace zel::bench {

/// Charge and monoisotopic offset of the peak in the middle of a slice, by the best cosine of the
/// slice and an averagine pattern: what the networks have to beat.
struct CosineMatch
{
    int charge = 0; ///< 0: no other peak fits any pattern
    int offset = 0;
    double cosine = 0.0;
};

/// The best match over all charges and offsets, or over the offsets of one charge.
/// \param charge  0: all
CosineMatch bestCosineMatch(const Eigen::SparseVector<double>& slice, double mz, int charge = 0);

} // namespace zel::bench
