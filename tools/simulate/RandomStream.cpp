#include "tools/simulate/RandomStream.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zel::simulate {

namespace {

/// Scatters the bits of a number (splitmix64, Steele, Lea & Flood 2014).
std::uint64_t scatter(std::uint64_t x)
{
    x += 0x9e3779b97f4a7c15ULL;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
    return x ^ (x >> 31);
}

std::uint64_t seedOfPath(std::uint64_t seed, std::initializer_list<std::uint64_t> path)
{
    std::uint64_t state = scatter(seed);
    for (const std::uint64_t step : path) {
        state = scatter(state ^ scatter(step));
    }
    return state;
}

} // namespace

RandomStream::RandomStream(std::uint64_t seed, std::initializer_list<std::uint64_t> path)
    : m_engine(seedOfPath(seed, path))
{}

double RandomStream::uniform()
{
    return static_cast<double>(m_engine() >> 11) * 0x1p-53;
}

double RandomStream::uniform(double low, double high)
{
    return low + (high - low) * uniform();
}

std::uint64_t RandomStream::below(std::uint64_t count)
{
    // Numbers from the last, incomplete round of `count` would favour the low results.
    const std::uint64_t greatest = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t incomplete = (greatest % count + 1) % count;
    std::uint64_t drawn = m_engine();
    while (drawn > greatest - incomplete) {
        drawn = m_engine();
    }
    return drawn % count;
}

double RandomStream::normal()
{
    if (m_hasSpareNormal) {
        m_hasSpareNormal = false;
        return m_spareNormal;
    }
    double x = 0.0;
    double y = 0.0;
    double square = 0.0;
    do {
        x = uniform(-1.0, 1.0);
        y = uniform(-1.0, 1.0);
        square = x * x + y * y;
    } while (square >= 1.0 || square == 0.0);
    const double factor = std::sqrt(-2.0 * std::log(square) / square);
    m_spareNormal = y * factor;
    m_hasSpareNormal = true;
    return x * factor;
}

double RandomStream::boundedNormal()
{
    double drawn = normal();
    while (std::abs(drawn) > 3.0) {
        drawn = normal();
    }
    return drawn;
}

double RandomStream::poisson(double mean)
{
    constexpr double largestExactMean = 64.0;
    if (!(mean > 0.0)) {
        return 0.0;
    }
    if (mean > largestExactMean) {
        return std::max(0.0, std::round(mean + std::sqrt(mean) * normal()));
    }
    // The count at which the cumulative probability passes a uniform number.
    double left = uniform();
    double count = 0.0;
    double probability = std::exp(-mean);
    while (left >= probability && probability > 0.0) {
        left -= probability;
        count += 1.0;
        probability *= mean / count;
    }
    return count;
}

} // namespace zel::simulate
