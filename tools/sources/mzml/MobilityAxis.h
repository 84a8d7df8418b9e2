#pragma once

#include <span>
#include <vector>

namespace zel::msreader {

/// The numbers of the mobility values of a run: 1, 2, 3, ... in ascending order of the value, one
/// axis for all frames.
///
/// Each distinct value has its own number, as long as there are at most 5,000. An instrument whose
/// calibration drifts from frame to frame has more; then the range from the lowest to the highest
/// value is cut into equal bins, as many as the richest frame has distinct values, but 2 to 5,000.
class MobilityAxis
{
public:
    static constexpr std::size_t kMaxExactValues = 5000;

    /// First step, for each frame: takes note of its values (finite).
    void addFrame(std::span<const double> mobilities);
    /// Second step: numbers them. Further frames may not be added.
    void finish();

    /// The highest number, 0 without values.
    long long size() const;
    /// The number of a value that was added.
    long long indexOf(double mobility) const;
    /// The value of a number from 1 to size(); of a bin its centre.
    double valueOf(long long index) const;

private:
    bool isBinned() const { return m_binCount > 0; }

    std::vector<double> m_values; ///< distinct, ascending; empty once there are too many
    std::vector<double> m_frameValues;
    std::size_t m_maxFrameValues = 0;
    bool m_hasTooManyValues = false;
    double m_lowest = 0.0;
    double m_highest = 0.0;
    long long m_binCount = 0; ///< 0 while values keep their own numbers
};

} // namespace zel::msreader
