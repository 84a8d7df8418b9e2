#pragma once

namespace zel {

/// A closed interval [start, end]. The default is (0, 0).
template <typename T>
struct Interval
{
    T start{};
    T end{};

    friend bool operator==(const Interval&, const Interval&) = default;
};

} // namespace zel
