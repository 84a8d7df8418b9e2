#pragma once

#include <vector>

namespace zel {

/// The position in a list of counts after which the scatter of the steps between neighbouring
/// counts grows most sharply: that of the smallest ratio of a scatter to the next one, plus 1. The
/// scatter is the population standard deviation of the magnitudes of three steps in a row. Ratios
/// that are not finite do not count.
/// \return -1 when there is no ratio, as with fewer than five counts
int kneeOfCounts(const std::vector<double>& counts);

} // namespace zel
