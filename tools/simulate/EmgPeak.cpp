#include "tools/simulate/EmgPeak.h"

#include <cmath>
#include <numbers>

namespace zel::simulate {

namespace {

using std::numbers::inv_sqrtpi;
using std::numbers::sqrt2;

/// Below this ratio of tau to sigma the tail cannot be distinguished from none.
constexpr double kNoTail = 1e-6;

/// exp(z^2) erfc(z) for z >= 0.
double erfcx(double z)
{
    constexpr double asymptoticFrom = 20.0;
    if (z < asymptoticFrom) {
        return std::exp(z * z) * std::erfc(z);
    }
    // The asymptotic series; the first term left out is below 1e-12 of the sum.
    const double w = 1.0 / (2.0 * z * z);
    return inv_sqrtpi / z * (1.0 - w * (1.0 - 3.0 * w * (1.0 - 5.0 * w * (1.0 - 7.0 * w))));
}

/// The place between `inside`, where the condition holds, and `outside`, where it does not, at
/// which that changes.
template <typename Condition>
double bisect(double inside, double outside, Condition holds)
{
    constexpr int stepCount = 80; // to the last bit
    for (int step = 0; step < stepCount; ++step) {
        const double middle = 0.5 * (inside + outside);
        (holds(middle) ? inside : outside) = middle;
    }
    return inside;
}

} // namespace

EmgPeak::EmgPeak(double sigma, double tau)
    : m_sigma(sigma)
    , m_tau(tau < kNoTail * sigma ? 0.0 : tau)
    , m_apex(0.0)
{
    if (m_tau > 0.0) {
        // tau f' = gaussian - f: the peak rises as long as it lies below its Gaussian, and its apex
        // lies before its mean.
        m_apex = bisect(0.0, m_tau, [this](double t) { return heightFromCentre(t) < gaussian(t); });
    }
}

double EmgPeak::start(double fraction) const
{
    const double limit = fraction * height(0.0);
    return bisect(0.0, -10.0 * m_sigma, [&](double t) { return height(t) > limit; });
}

double EmgPeak::end(double fraction) const
{
    const double limit = fraction * height(0.0);
    const double beyond = 10.0 * m_sigma + 20.0 * m_tau;
    return bisect(0.0, beyond, [&](double t) { return height(t) > limit; });
}

double EmgPeak::gaussian(double fromCentre) const
{
    const double x = fromCentre / m_sigma;
    return std::exp(-0.5 * x * x) * inv_sqrtpi / (sqrt2 * m_sigma);
}

double EmgPeak::heightFromCentre(double fromCentre) const
{
    if (m_tau == 0.0) {
        return gaussian(fromCentre);
    }
    const double ratio = m_sigma / m_tau;
    const double x = fromCentre / m_sigma;
    const double z = (ratio - x) / sqrt2;
    const double scale = 0.5 / m_tau;
    return z < 0.0 ? scale * std::exp(ratio * (0.5 * ratio - x)) * std::erfc(z)
                   : scale * std::exp(-0.5 * x * x) * erfcx(z);
}

} // namespace zel::simulate
