#pragma once

namespace zel {

// Numbers that many rooms share and that are no constants of nature; those stand in
// PhysicalConstants.h.

/// What an intensity, a height or a width may be at most, in its own unit, to count as none: far
/// below what any instrument measures, far above what rounding leaves of a difference of such
/// values.
inline constexpr double kNegligible = 1e-12;

/// Seconds of a minute.
inline constexpr double kSecondsPerMinute = 60.0;

/// One part in a million (ppm).
inline constexpr double kPartsPerMillion = 1e-6;

} // namespace zel
