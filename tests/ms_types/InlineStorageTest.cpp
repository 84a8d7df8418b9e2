#include "common/ms_types/XicDimensions.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>

// Every allocation of this program passes here; glibc's own entry does the work.
extern "C" void* __libc_malloc(std::size_t size); // NOLINT(bugprone-reserved-identifier)

namespace {

std::atomic<long> g_allocationCount = 0;

} // namespace

extern "C" void* malloc(std::size_t size)
{
    g_allocationCount.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}

namespace zel {

namespace {

template <typename Work>
long allocationsOf(Work work)
{
    const long before = g_allocationCount;
    work();
    return g_allocationCount - before;
}

} // namespace

TEST(InlineStorageTest, OneOrTwoIntervalsNeedNoHeap)
{
    using TimeSet = math::ClosedMultiInterval<double, 6>;
    bool contained = false;
    EXPECT_EQ(allocationsOf([&contained] {
                  TimeSet time(1.0, 2.0);
                  time.unite({3.0, 4.0});
                  time.grow(0.1);
                  const XicDimensions box({500.0, 501.0}, time);
                  const XicDimensions copy = box;
                  contained = copy.timeInterval().contains(3.5);
              }),
              0);
    EXPECT_TRUE(contained);

    TimeSet three(1.0, 2.0);
    three.unite({3.0, 4.0});
    EXPECT_GT(allocationsOf([&three] {
                  three.unite({5.0, 6.0});
              }),
              0)
        << "the count must see the heap";
    EXPECT_EQ(three.intervals().size(), 3U);
}

} // namespace zel
