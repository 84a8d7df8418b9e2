#include "common/stable/MathUtils.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace zel {

bool MathUtils::nearlyEqual(double a, double b)
{
    constexpr double relativeTolerance = 1e-12;
    return std::abs(a - b) <= relativeTolerance * std::max({1.0, std::abs(a), std::abs(b)});
}

double MathUtils::clamp(double low, double high, double value)
{
    if (value < low) {
        return low;
    }
    return value > high ? high : value;
}

bool MathUtils::between(double a, double b, double value)
{
    return std::min(a, b) <= value && value <= std::max(a, b);
}

double MathUtils::linearStep(double a, double b, double value)
{
    return a == b ? 0.0 : (value - a) / (b - a);
}

QPointF MathUtils::lerp(const QPointF& a, const QPointF& b, double fraction)
{
    return a + (b - a) * fraction;
}

int MathUtils::truncateToInt(double value)
{
    if (std::isnan(value)) {
        return 0;
    }
    return static_cast<int>(std::clamp<double>(
        value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

double MathUtils::median(std::vector<double> values)
{
    std::erase_if(values, [](double value) { return std::isnan(value); });
    if (values.empty()) {
        return 0.0;
    }
    const auto upper = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), upper, values.end());
    if (values.size() % 2 == 1) {
        return *upper;
    }
    return std::midpoint(*std::max_element(values.begin(), upper), *upper);
}

} // namespace zel
