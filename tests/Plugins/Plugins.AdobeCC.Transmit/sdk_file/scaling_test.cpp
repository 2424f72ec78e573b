#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/scaling.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <vector>

namespace {

std::vector<csSDK_uint32> scaled(std::vector<csSDK_uint32>& from, csSDK_int32 width, csSDK_int32 height,
                                 csSDK_int32 to_width, csSDK_int32 to_height)
{
    std::vector<csSDK_uint32> to(static_cast<std::size_t>(to_width) * static_cast<std::size_t>(to_height), 99);
    ScaleAndBltFrame({reinterpret_cast<char*>(from.data()), width * 4, width, height},
                     {reinterpret_cast<char*>(to.data()), to_width * 4, to_width, to_height}, 4);
    return to;
}

TEST(Scaling, SameSizeIsACopy)
{
    std::vector<csSDK_uint32> from(12);
    std::iota(from.begin(), from.end(), 0u);
    EXPECT_EQ(scaled(from, 4, 3, 4, 3), from);
}

TEST(Scaling, TakesThePixelUnderTheMiddle)
{
    std::vector<csSDK_uint32> from{0, 1, 2, 3, 4, 5};
    EXPECT_EQ(scaled(from, 6, 1, 3, 1), (std::vector<csSDK_uint32>{1, 3, 5}));
    EXPECT_EQ(scaled(from, 6, 1, 2, 1), (std::vector<csSDK_uint32>{1, 4}));
    EXPECT_EQ(scaled(from, 6, 1, 1, 1), (std::vector<csSDK_uint32>{3}));
    EXPECT_EQ(scaled(from, 2, 3, 4, 6)[23], 5u);
    EXPECT_EQ(scaled(from, 3, 1, 6, 1), (std::vector<csSDK_uint32>{0, 0, 1, 1, 2, 2}));
}

TEST(Scaling, BottomUpAndPaddedRows)
{
    // Two rows of two pixels, three words apart, into two rows upside down.
    std::vector<csSDK_uint32> from{1, 2, 77, 3, 4, 77};
    std::vector<csSDK_uint32> to(4, 0);
    ScaleAndBltFrame({reinterpret_cast<char*>(from.data()), 12, 2, 2}, {reinterpret_cast<char*>(&to[2]), -8, 2, 2}, 4);
    EXPECT_EQ(to, (std::vector<csSDK_uint32>{3, 4, 1, 2}));
}

TEST(Scaling, NothingForAnEmptySide)
{
    csSDK_uint32 from = 1, to = 2;
    SDK_FrameBuffer const one{reinterpret_cast<char*>(&from), 4, 1, 1};
    for (auto const& [width, height] : {std::pair{0, 1}, std::pair{1, 0}, std::pair{-1, 1}}) {
        ScaleAndBltFrame(one, {reinterpret_cast<char*>(&to), 4, width, height}, 4);
        ScaleAndBltFrame({reinterpret_cast<char*>(&from), 4, width, height}, {reinterpret_cast<char*>(&to), 4, 1, 1},
                         4);
    }
    EXPECT_EQ(to, 2u);
}

TEST(Scaling, LargestSizesDoNotOverflow)
{
    char* const somewhere = reinterpret_cast<char*>(4096); // never read
    SDK_FrameBuffer const src{somewhere, 0, 0x7FFFFFFF, 0x7FFFFFFF};
    char const* const last = GetSrcPix(src, 1, 0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFE, 0x7FFFFFFE);
    EXPECT_EQ(last - src.pixels, 0x7FFFFFFE);
}

} // namespace
