#pragma once

namespace zel {

/// Mass of the proton, Da. Source: CODATA 2006, 1.00727646677(10) u.
inline constexpr double kProtonMassDa = 1.00727646677;

/// Spacing of the peaks of an isotope pattern: mass of 13C less that of 12C, rounded, Da. Source:
/// AME2012, 13.00335483507 u - 12 u.
inline constexpr double kCarbonIsotopeSpacingDa = 1.003355;

} // namespace zel
