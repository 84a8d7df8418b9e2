#include "common/stable/MathUtils.h"

#include <algorithm>
#include <cmath>

namespace zel {

bool MathUtils::nearlyEqual(double a, double b)
{
    constexpr double relativeTolerance = 1e-12;
    return std::abs(a - b) <= relativeTolerance * std::max({1.0, std::abs(a), std::abs(b)});
}

} // namespace zel
