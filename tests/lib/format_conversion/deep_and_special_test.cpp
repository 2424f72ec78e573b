#include "tests/support/example.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace quillo::conversions {
namespace {

bytes const black{0x80, 0x10, 0x80, 0x10};

TEST(BlackUyvy, TenPixelsWriteFortyBytes)
{
    outcome const o = convert({"black::uyvy", 10, 1, {}});
    EXPECT_EQ(o.planes[0], join({join({black}, 10), bytes(8, untouched)}));
}

TEST(BlackUyvy, OnlyTheLastPixelsAreDoubled)
{
    outcome const o = convert({"black::uyvy", 35, 1, {}});
    EXPECT_EQ(o.planes[0], join({join({black}, 16 + 3), bytes(8, untouched)}));
}

// Three groups of four components; component n is 4 n + 3, so its byte is n.
bytes v210_groups(int pixels)
{
    bytes source;
    int component = 0;
    for (int word = 0; word < (pixels + 5) / 6 * 4; ++word) {
        std::uint32_t bits = 0xC0000000; // the top two bits carry nothing
        for (int i = 0; i < 3; ++i)
            bits |= static_cast<std::uint32_t>(4 * component++ + 3) << 10 * i;
        for (int i = 0; i < 4; ++i)
            source.push_back(static_cast<unsigned char>(bits >> 8 * i));
    }
    return source;
}

bytes counting(std::size_t count)
{
    bytes values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = static_cast<unsigned char>(i);
    return values;
}

TEST(V210ToUyvy, TwelvePixelsGiveTen)
{
    outcome const o = convert({"v210::uyvy", 12, 1, {v210_groups(12)}});
    EXPECT_EQ(o.planes[0], join({counting(20), bytes(8, untouched)}));
}

TEST(V210ToUyvy, EightPixelsGiveSix)
{
    outcome const o = convert({"v210::uyvy", 8, 1, {v210_groups(8)}});
    EXPECT_EQ(o.planes[0], join({counting(12), bytes(8, untouched)}));
}

TEST(V210ToUyvy, TwoPixelsGiveNothing)
{
    EXPECT_EQ(convert({"v210::uyvy", 2, 1, {v210_groups(2)}}).planes[0], bytes(8, untouched));
}

TEST(V210ToUyvy, PixelsOfShortRuns)
{
    std::size_t const pixels[] = {0, 0, 0, 2, 2, 4, 4, 6, 6, 8, 8, 10, 10, 12};
    for (int width = 0; width < 14; ++width) {
        outcome const o = convert({"v210::uyvy", width, 1, {v210_groups(14)}});
        std::size_t const expected = 2 * pixels[width];
        EXPECT_EQ(o.planes[0], join({counting(expected), bytes(8, untouched)})) << width;
    }
}

// Two lines of twelve are a run of 24 when joined, which loses two pixels once and not twice.
TEST(V210ToUyvy, JoinedLinesLosePixelsOnce)
{
    outcome const o = convert({"v210::uyvy", 12, 2, {v210_groups(24)}});
    EXPECT_EQ(o.planes[0], join({counting(44), bytes(8, untouched)}));
}

bytes words(std::vector<int> const& values)
{
    bytes memory;
    for (int const v : values)
        memory = join({memory, {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8)}});
    return memory;
}

TEST(P216ToUyvy, HighBytesAlternate)
{
    outcome const o = convert({"p216::uyvy", 2, 1, {words({43981, 255}), words({4660, 65535})}});
    EXPECT_EQ(o.planes[0], join({{18, 171, 255, 0}, bytes(8, untouched)}));
    outcome const many = convert({"p216::uyvy", 32, 1, {join({words({43981})}, 32), join({words({4660})}, 32)}});
    EXPECT_EQ(part(many.planes[0], 0, 64), join({{18, 171}}, 32));
}

TEST(P216ToUyvy, OddWidthStopsAtItsPixel)
{
    outcome const o = convert({"p216::uyvy", 1, 1, {words({43981}), words({4660})}});
    EXPECT_EQ(o.planes[0], join({{18, 171}, bytes(8, untouched)}));
}

// Chroma lines join at four bytes a pixel and are then read without gaps.
TEST(P216ToUyvy, ChromaJoinsAtTwiceItsLength)
{
    bytes const y = words({1 << 8, 2 << 8, 3 << 8, 4 << 8});
    bytes const uv = words({11 << 8, 12 << 8, 13 << 8, 14 << 8, 15 << 8, 16 << 8, 17 << 8, 18 << 8});
    EXPECT_EQ(part(convert({"p216::uyvy", 2, 2, {y, uv}, {4, 8, 4}}).planes[0], 0, 8),
              (bytes{11, 1, 12, 2, 13, 3, 14, 4}));
    // Line by line otherwise: tight, or with any other gap.
    EXPECT_EQ(part(convert({"p216::uyvy", 2, 2, {y, uv}, {4, 4, 4}}).planes[0], 0, 8),
              (bytes{11, 1, 12, 2, 13, 3, 14, 4}));
    EXPECT_EQ(part(convert({"p216::uyvy", 2, 2, {y, uv}, {4, 12, 4}}).planes[0], 0, 8),
              (bytes{11, 1, 12, 2, 17, 3, 18, 4}));
}

TEST(AlphaU16ToAlpha, KeepsTheHighByte)
{
    outcome const o = convert({"alpha_u16::alpha", 3, 1, {words({65535, 255, 256})}});
    EXPECT_EQ(o.planes[0], join({{255, 0, 1}, bytes(8, untouched)}));
}

TEST(LToBgra, GreyInEveryChannel)
{
    for (int const width : {1, 3, 16, 21}) {
        auto const pixels = static_cast<std::size_t>(width);
        outcome const o = convert({"L::bgra", width, 1, {bytes(pixels, 7)}});
        EXPECT_EQ(o.planes[0], join({join({{7, 7, 7, 255}}, width), bytes(8, untouched)}));
    }
}

} // namespace
} // namespace quillo::conversions
