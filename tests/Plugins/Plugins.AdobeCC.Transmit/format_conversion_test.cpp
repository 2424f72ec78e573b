#include "tests/support/example.h"

#include <gtest/gtest.h>

namespace quillo::conversions {
namespace {

// B, G, R, A
bytes const black{0, 0, 0, 255};
bytes const white{255, 255, 255, 255};

outcome from_bgra(int width, int height, bytes const& source)
{
    return convert({"convert_BGRA_to_UYVY_A", width, height, {source}});
}

outcome from_yuya(int width, int height, bytes const& source)
{
    return convert({"convert_YUYA_to_UYVY_A", width, height, {source}});
}

TEST(ConvertBgraToUyvyA, BlackIsOpaque)
{
    outcome const o = from_bgra(16, 1, join({black}, 16));
    EXPECT_EQ(part(o.planes[0], 0, 32), join({{128, 16, 128, 16}}, 8));
    EXPECT_EQ(part(o.planes[1], 0, 16), bytes(16, 255));
    EXPECT_TRUE(o.all_opaque);
}

TEST(ConvertBgraToUyvyA, WhiteCountsAsNotOpaque)
{
    outcome const o = from_bgra(16, 1, join({white}, 16));
    EXPECT_EQ(part(o.planes[0], 0, 32), join({{127, 235, 128, 235}}, 8));
    EXPECT_FALSE(o.all_opaque);
}

// Blue 255 at position 0 of every block, or at position 4 of every block, is enough.
TEST(ConvertBgraToUyvyA, BlueOfPixels0And4TakesPart)
{
    for (std::size_t const position : {0, 4}) {
        bytes source = join({black}, 16);
        source[4 * position] = 255;
        EXPECT_TRUE(from_bgra(16, 1, source).all_opaque) << position;
        source[4 * (position + 8)] = 255;
        EXPECT_FALSE(from_bgra(16, 1, source).all_opaque) << position;
    }
}

TEST(ConvertBgraToUyvyA, OneAlphaOf254IsEnough)
{
    for (std::size_t pixel = 0; pixel < 10; ++pixel) {
        bytes source = join({black}, 10);
        EXPECT_TRUE(from_bgra(10, 1, source).all_opaque);
        source[4 * pixel + 3] = 254;
        EXPECT_FALSE(from_bgra(10, 1, source).all_opaque) << pixel;
    }
}

TEST(ConvertBgraToUyvyA, WithoutBlocksNeverOpaque)
{
    EXPECT_FALSE(from_bgra(6, 4, join({black}, 24)).all_opaque);
    EXPECT_FALSE(from_bgra(6, 4, join({{0, 0, 0, 0}}, 24)).all_opaque);
    EXPECT_FALSE(from_bgra(16, 0, {}).all_opaque);
    EXPECT_FALSE(from_bgra(16, -1, {}).all_opaque);
}

TEST(ConvertBgraToUyvyA, NinePixelsTakeTheTenth)
{
    bytes const beyond{0, 0, 255, 99}; // red
    outcome const o = from_bgra(9, 1, join({join({black}, 9), beyond}));
    EXPECT_EQ(part(o.planes[0], 16, 4), (bytes{128, 16, 239, 62}));
    EXPECT_EQ(o.planes[1], join({bytes(9, 255), {99}, bytes(8, untouched)}));
    EXPECT_FALSE(o.all_opaque);
}

TEST(ConvertBgraToUyvyA, CbOfTheEvenAndCrOfTheOddPixel)
{
    for (int const width : {2, 8}) {
        outcome const o = from_bgra(width, 1, join({{255, 0, 0, 255}, {0, 0, 255, 255}}, width / 2));
        EXPECT_EQ(o.planes[0][0], 239);
        EXPECT_EQ(o.planes[0][2], 239);
    }
}

// Cr, Cb, Y, A
bytes yuya(unsigned char alpha) { return {200, 100, 50, alpha}; }

TEST(ConvertYuyaToUyvyA, OpaqueWithBlocks)
{
    bytes source = join({yuya(255)}, 32);
    outcome const o = from_yuya(16, 2, source);
    EXPECT_TRUE(o.all_opaque);
    EXPECT_EQ(part(o.planes[0], 0, 64), join({{100, 50, 200, 50}}, 16));
    for (std::size_t pixel = 0; pixel < 32; ++pixel) {
        source = join({yuya(255)}, 32);
        source[4 * pixel + 3] = 254;
        EXPECT_FALSE(from_yuya(16, 2, source).all_opaque) << pixel;
    }
}

TEST(ConvertYuyaToUyvyA, WithoutBlocksNeverOpaque)
{
    EXPECT_FALSE(from_yuya(7, 100, join({yuya(255)}, 701)).all_opaque);
    EXPECT_FALSE(from_yuya(16, 0, {}).all_opaque);
}

TEST(ConvertYuyaToUyvyA, AlphaPlaneIsInOrder)
{
    outcome const o =
        from_yuya(8, 1, join({yuya(10), yuya(20), yuya(30), yuya(40), yuya(50), yuya(60), yuya(70), yuya(80)}));
    EXPECT_EQ(part(o.planes[1], 0, 8), (bytes{10, 20, 30, 40, 50, 60, 70, 80}));
}

TEST(ConvertYuyaToUyvyA, OddWidthTakesThePixelBeyond)
{
    outcome const o = from_yuya(9, 1, join({join({yuya(255)}, 9), {1, 2, 3, 254}}));
    EXPECT_EQ(part(o.planes[0], 16, 4), (bytes{100, 50, 200, 3}));
    EXPECT_EQ(o.planes[1][9], 254);
    EXPECT_FALSE(o.all_opaque);
}

bytes over(int pixels, bytes const& fg, bytes const& alpha, bytes const& dst)
{
    outcome const o = convert({.name = "composite", .width = pixels, .sources = {fg, alpha}, .background = dst});
    return part(o.planes[0], 0, 2 * static_cast<std::size_t>(pixels));
}

bytes const fg = join({{10, 20, 255, 128}}, 8);
bytes const bg = join({{200, 1, 0, 77}}, 8);

TEST(Composite, OpaqueBlockIsTheForeground)
{
    EXPECT_EQ(over(8, part(fg, 0, 16), bytes(8, 255), part(bg, 0, 16)), part(fg, 0, 16));
}

TEST(Composite, TransparentBlockIsTheBackground)
{
    EXPECT_EQ(over(8, part(fg, 0, 16), bytes(8, 0), part(bg, 0, 16)), part(bg, 0, 16));
}

TEST(Composite, OpaqueAndTransparentTailPixelsAreZero)
{
    EXPECT_EQ(over(9, part(fg, 0, 18), bytes(9, 255), part(bg, 0, 18)), join({part(fg, 0, 16), {0, 0}}));
    EXPECT_EQ(over(9, part(fg, 0, 18), bytes(9, 0), part(bg, 0, 18)), join({part(bg, 0, 16), {0, 0}}));
}

TEST(Composite, AlphaOf128Weighs129)
{
    // Each product is floored by itself in a block, the sum in a tail.
    auto mixed = [](int f, int d) { return static_cast<unsigned char>(129 * f / 256 + 127 * d / 256); };
    bytes const block = over(8, part(fg, 0, 16), bytes(8, 128), part(bg, 0, 16));
    EXPECT_EQ(part(block, 0, 4), (bytes{mixed(10, 200), mixed(20, 1), mixed(255, 0), mixed(128, 77)}));
    EXPECT_EQ(part(block, 0, 4), (bytes{5 + 99, 10 + 0, 128 + 0, 64 + 38}));
    EXPECT_EQ(over(1, {20, 128}, {128}, {1, 77}), (bytes{(129 * 20 + 127) / 256, (129 * 128 + 127 * 77) / 256}));
}

} // namespace
} // namespace quillo::conversions
