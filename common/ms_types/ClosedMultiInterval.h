#pragma once

#include "common/ms_types/Interval.h"

#include <QVarLengthArray>

#include <algorithm>
#include <functional>
#include <limits>
#include <optional>
#include <span>
#include <type_traits>

namespace zel::math {

/// A set on one axis: disjoint closed intervals in ascending order.
///
/// For a real `T` the set has a tolerance of 10^-N: two intervals that are less than that apart are
/// one, and a value that lies less than that outside still belongs to it. An integer set has no
/// tolerance, but neighbouring integers join: [1, 2] and [3, 4] are [1, 4]. Up to two intervals are
/// stored inline, without a heap allocation.
///
/// A plain value; safe to read from several threads.
template <typename T, int N>
class ClosedMultiInterval
{
public:
    static_assert(std::is_arithmetic_v<T> && N >= 0);

    /// The empty set.
    ClosedMultiInterval() = default;
    /// The interval [start, end]; the empty set when start lies above end.
    ClosedMultiInterval(T start, T end)
        : m_intervals{Interval<T>{start, end}}
    {}

    /// From the lowest to the highest finite value of T.
    static ClosedMultiInterval unbounded() { return {-greatest(), greatest()}; }

    /// The union of the sets of all elements, in one merge.
    /// \param setOf  gives the set of an element
    template <typename Elements, typename SetOf = std::identity>
    static ClosedMultiInterval unionOf(const Elements& elements, SetOf setOf = {})
    {
        ClosedMultiInterval all;
        for (const auto& element : elements) {
            const ClosedMultiInterval& set = std::invoke(setOf, element);
            all.m_intervals.append(set.m_intervals.data(), set.m_intervals.size());
        }
        all.merge();
        return all;
    }

    /// 10^-N; 0 for an integer set.
    static constexpr T tolerance()
    {
        if constexpr (std::is_integral_v<T>) {
            return 0;
        } else {
            T power = 1;
            for (int i = 0; i < N; ++i) {
                power *= 10;
            }
            return 1 / power;
        }
    }

    bool isEmpty() const { return m_intervals.isEmpty() || isEmpty(m_intervals.first()); }
    bool isUnbounded() const
    {
        return m_intervals.size() == 1 &&
               m_intervals.first() == Interval<T>{-greatest(), greatest()};
    }

    /// The lowest and the highest value; nothing for the empty set.
    std::optional<T> minimum() const
    {
        return isEmpty() ? std::nullopt : std::optional<T>(m_intervals.first().start);
    }
    std::optional<T> maximum() const
    {
        return isEmpty() ? std::nullopt : std::optional<T>(m_intervals.last().end);
    }

    /// The intervals, ascending; none for the empty set.
    std::span<const Interval<T>> intervals() const
    {
        const auto count = isEmpty() ? 0 : static_cast<std::size_t>(m_intervals.size());
        return {m_intervals.data(), count};
    }

    /// Adds all values of `other` to this set.
    void unite(const ClosedMultiInterval& other)
    {
        if (other.isEmpty()) {
            return;
        }
        if (isEmpty()) {
            *this = other;
            return;
        }
        m_intervals.append(other.m_intervals.data(), other.m_intervals.size());
        merge();
    }

    /// Widens each interval by `amount` at both ends. The empty and the unbounded set stay as they
    /// are.
    void grow(double amount)
    {
        if (isEmpty() || isUnbounded()) {
            return;
        }
        for (Interval<T>& interval : m_intervals) {
            if (!isEmpty(interval)) {
                interval.start = static_cast<T>(interval.start - static_cast<T>(amount));
                interval.end = static_cast<T>(interval.end + static_cast<T>(amount));
            }
        }
        merge();
    }

    /// True when `x` lies in an interval, or outside it by at most the tolerance.
    bool contains(T x) const
    {
        return std::any_of(
            m_intervals.begin(), m_intervals.end(), [x](const Interval<T>& interval) {
                return !isEmpty(interval) && interval.start - tolerance() <= x &&
                       x <= interval.end + tolerance();
            });
    }

    friend bool operator==(const ClosedMultiInterval& a, const ClosedMultiInterval& b)
    {
        return std::ranges::equal(a.intervals(), b.intervals());
    }

private:
    static constexpr T greatest() { return std::numeric_limits<T>::max(); }
    static bool isEmpty(const Interval<T>& interval) { return !(interval.start <= interval.end); }

    /// Whether `later`, which does not start below `current`, continues it.
    static bool joins(const Interval<T>& current, const Interval<T>& later)
    {
        if constexpr (std::is_integral_v<T>) {
            return later.start <= current.end || later.start - 1 <= current.end;
        } else {
            return later.start - tolerance() < current.end;
        }
    }

    void merge()
    {
        const auto firstEmpty =
            std::remove_if(m_intervals.begin(), m_intervals.end(), [](const Interval<T>& interval) {
                return isEmpty(interval);
            });
        std::sort(m_intervals.begin(), firstEmpty, [](const Interval<T>& a, const Interval<T>& b) {
            return a.start < b.start;
        });
        auto current = m_intervals.begin();
        for (auto later = current; later != firstEmpty; ++later) {
            if (later == current || later->end <= current->end) {
                continue;
            }
            if (joins(*current, *later)) {
                current->end = later->end;
            } else {
                *++current = *later;
            }
        }
        const auto keptCount =
            firstEmpty == m_intervals.begin() ? 0 : current - m_intervals.begin() + 1;
        m_intervals.resize(keptCount);
    }

    QVarLengthArray<Interval<T>, 2> m_intervals;
};

/// A set of integer indices, such as the mobility scans of a query. The default is the unbounded
/// set.
template <typename T>
class Range : public ClosedMultiInterval<T, 0>
{
public:
    static_assert(std::is_integral_v<T>);
    using Base = ClosedMultiInterval<T, 0>;

    /// Every index.
    Range()
        : Base(Base::unbounded())
    {}
    /// The indices from `start` to `end`, both included.
    Range(T start, T end)
        : Base(start, end)
    {}
    Range(const Base& set)
        : Base(set)
    {}
};

} // namespace zel::math
