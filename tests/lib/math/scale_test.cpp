#include "lib/math/scale.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>

using Processing::Quillo::Plugins::Lib::math::scale;

namespace {

using i64 = long long;
using u64 = unsigned long long;

TEST(Scale, FrameDurations)
{
    EXPECT_EQ(scale(i64{10000000}, 1001, 30000), 333667);
    EXPECT_EQ(scale(i64{10000000}, 1001, 24000), 417083);
    EXPECT_EQ(scale(i64{10000000}, 1000, 25000), 400000);
}

TEST(Scale, HalfIsRoundedUp)
{
    EXPECT_EQ(scale(i64{5}, 5, 2), 13);
    EXPECT_EQ(scale(u64{5}, 5u, 2u), 13u);
}

TEST(Scale, HalfOfAnOddDivisorIsRoundedDown)
{
    EXPECT_EQ(scale(i64{1}, 1, 3), 0);
    EXPECT_EQ(scale(i64{2}, 1, 3), 1);
    EXPECT_EQ(scale(u64{1}, 1u, 3u), 0u);
}

TEST(Scale, NegativeResultsAreNotSymmetric)
{
    EXPECT_EQ(scale(i64{-5}, 5, 2), -12); // (-25 + 1) / 2
    EXPECT_EQ(scale(i64{-1}, 1, 2), 0);
    EXPECT_EQ(scale(i64{-3}, 1, 2), -1);
}

TEST(Scale, HostTicksToNetworkTime)
{
    // 254016000000 ticks a second are 127008 ticks in 5 network units.
    EXPECT_EQ(scale(i64{254016000000}, 5, 127008), 10000000);
    EXPECT_EQ(scale(i64{91445760000000000}, 5, 127008), i64{3600000000000}); // 100 hours
}

// A second opinion in 128 bits, for the two sides of the split.
TEST(Scale, AgreesWithWideArithmeticOnBothSidesOfTheSplit)
{
    std::mt19937_64 random{20240607};
    for (int round = 0; round < 200000; ++round) {
        auto const b = static_cast<int>(random() >> 34) + 1;
        auto const c = static_cast<int>(random() >> 34) + 1;
        auto const a = static_cast<i64>(random() >> (1 + random() % 62));
        __extension__ using i128 = __int128;
        auto const exact = (static_cast<i128>(a) * b + c / 2) / c;
        if (exact > std::numeric_limits<i64>::max())
            continue;
        ASSERT_EQ(scale(a, b, c), static_cast<i64>(exact)) << a << " * " << b << " / " << c;
    }
}

TEST(Scale, TheSplitBeginsBeyondThirtyOneOrThirtyTwoBits)
{
    EXPECT_EQ(scale(i64{0x7FFFFFFF}, 3, 2), i64{3221225471}); // (6442450941 + 1) / 2
    EXPECT_EQ(scale(i64{0x80000000}, 3, 2), i64{3221225472});
    EXPECT_EQ(scale(u64{0xFFFFFFFF}, 3u, 2u), u64{6442450943}); // (12884901885 + 1) / 2
    EXPECT_EQ(scale(u64{0x100000000}, 3u, 2u), u64{6442450944});
}

// On the short road a negative a times b may pass 64 bits; it wraps like the unsigned product.
TEST(Scale, ProductsBeyondSixtyFourBitsWrap)
{
    EXPECT_EQ(scale(std::numeric_limits<i64>::min(), 2, 1), 0);
    EXPECT_EQ(scale(std::numeric_limits<u64>::max(), 2u, 1u), std::numeric_limits<u64>::max() - 1);
}

} // namespace
