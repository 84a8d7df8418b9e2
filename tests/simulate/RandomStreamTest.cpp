#include "tools/simulate/RandomStream.h"

#include <gtest/gtest.h>

namespace zel::simulate {

TEST(RandomStreamTest, GivesTheSameBitsEverywhere)
{
    // From an independent writing of the engine; runs of one seed change when these do.
    RandomStream random(42, {RandomStream::Scans, 1, 7});
    EXPECT_EQ(random.uniform(), 0x1.f2248601caf2p-1);
    EXPECT_EQ(random.below(1000), 483u);
    EXPECT_NEAR(random.normal(), 0.12062156562043402, 1e-14);
    EXPECT_NE(RandomStream(1, {2, 3}).uniform(), RandomStream(1, {3, 2}).uniform());
}

} // namespace zel::simulate
