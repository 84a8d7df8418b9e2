#pragma once

#include <cstdint>
#include <initializer_list>
#include <random>

namespace zel::simulate {

/// A stream of random numbers that is the same on every platform. The C++ standard fixes the bits
/// of std::mt19937_64 but not its distributions, so these are made here.
///
/// Each thing that is drawn has a stream of its own, named by a path of numbers, so that drawing
/// more of one thing changes nothing else.
class RandomStream
{
public:
    /// What a stream is for, the first number of its path.
    enum Purpose : std::uint64_t { Sequences, Peptides, Background, Drift, Samples, Scans, Hills };

    RandomStream(std::uint64_t seed, std::initializer_list<std::uint64_t> path);

    /// Uniform in [0, 1), in steps of 2^-53.
    double uniform();
    /// Uniform in [low, high).
    double uniform(double low, double high);
    /// A whole number in [0, count), all with the same probability; `count` at least 1.
    std::uint64_t below(std::uint64_t count);
    /// Normal, mean 0 and standard deviation 1 (polar method, Marsaglia & Bray 1964).
    double normal();
    /// The same, drawn again until it lies within three standard deviations.
    double boundedNormal();
    /// Poisson: by inversion up to a mean of 64, above that the rounded normal of the same mean
    /// and variance. A mean that is not positive gives 0.
    double poisson(double mean);

private:
    std::mt19937_64 m_engine;
    double m_spareNormal = 0.0;
    bool m_hasSpareNormal = false;
};

} // namespace zel::simulate
