// The value of long runs is kept for the life of the process, so these have a process of their own.
#include "tests/support/example.h"

#include <gtest/gtest.h>

namespace quillo::conversions {
namespace {

bytes filled(int width, int height, int value)
{
    outcome const o = convert({"black::alpha", width, height, {}, {}, value});
    return part(o.planes[0], 0, static_cast<std::size_t>(width * height));
}

TEST(BlackAlpha, FirstLongRunsValueIsKept)
{
    // Too short to reach the vectors: nothing is kept yet.
    EXPECT_EQ(filled(31, 1, 9), bytes(31, 9));
    EXPECT_EQ(filled(40, 1, 0), bytes(40, 0));
    EXPECT_EQ(filled(40, 1, 255), join({bytes(32, 0), bytes(8, 255)}));
    // Lines join: 2 x 20 are a run of 40.
    EXPECT_EQ(filled(20, 2, 255), join({bytes(32, 0), bytes(8, 255)}));
    EXPECT_EQ(filled(31, 1, 255), bytes(31, 255));
    EXPECT_EQ(filled(96, 1, 77), bytes(96, 0));
    // A byte is taken of the value.
    EXPECT_EQ(filled(3, 1, 0x1FE), bytes(3, 0xFE));
    EXPECT_EQ(filled(3, 1, -1), bytes(3, 255));
}

} // namespace
} // namespace quillo::conversions
