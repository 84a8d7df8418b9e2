#pragma once

#include "common/stable/Export.h"

#include <span>
#include <vector>

namespace zel {

/// Convolves an evenly sampled signal with a kernel, keeping its length:
///     out[i] = sum over k of kernel[k] * signal[i + kernel.size() / 2 - k],
/// where the signal goes on with its end values beyond its ends. Each sum runs over k in ascending
/// order from 0.0, alike at each i: a flat signal stays exactly flat, and a result does not depend
/// on how the compiler vectorises.
/// \param kernel  not empty; its centre is at kernel.size() / 2
/// \param out     as long as the signal; may be the signal itself
ZEL_EXPORT void convolveRepeatingEnds(std::span<const double> signal,
                                      std::span<const double> kernel,
                                      std::span<double> out);

namespace core {

/// Discrete convolution in one dimension. Mode 0: as convolveRepeatingEnds, `out` becomes as long
/// as `signal` and is aligned with it point for point. There is no other mode. `out` may be
/// `signal`.
/// \return false, with `out` untouched, for another mode or an empty kernel
ZEL_EXPORT bool conv(const std::vector<double>& signal,
                     const std::vector<double>& kernel,
                     int mode,
                     std::vector<double>* out);

} // namespace core

} // namespace zel
