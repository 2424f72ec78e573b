#include "tests/support/example.h"

#include <gtest/gtest.h>

namespace quillo::conversions {
namespace {

// B, G, R, A
bytes const blue{255, 0, 0, 255};
bytes const red{0, 0, 255, 255};
bytes const white{255, 255, 255, 255};

bytes white_with(unsigned char alpha) { return {255, 255, 255, alpha}; }

TEST(BgrxToUyvy, Black)
{
    for (auto const* name : {"bgrx_601::uyvy", "bgrx_709::uyvy", "bgrx::uyvy", "rgbx_601::uyvy", "rgbx_709::uyvy"}) {
        outcome const o = convert({name, 8, 1, {join({{0, 0, 0, 77}}, 8)}});
        EXPECT_EQ(part(o.planes[0], 0, 16), join({{128, 16, 128, 16}}, 4)) << name;
    }
}

TEST(BgrxToUyvy, WhiteHasACbOf127)
{
    for (auto const* name : {"bgrx_601::uyvy", "bgrx_709::uyvy", "bgrx::uyvy", "rgbx_601::uyvy", "rgbx_709::uyvy"}) {
        outcome const o = convert({name, 8, 1, {join({{255, 255, 255, 77}}, 8)}});
        EXPECT_EQ(part(o.planes[0], 0, 16), join({{127, 235, 128, 235}}, 4)) << name;
    }
}

TEST(BgrToUyvy, BlackAndWhiteAreTheSame)
{
    outcome const o = convert({"bgr::uyvy", 12, 2, {join({bytes(36, 0), bytes(36, 255)})}});
    EXPECT_EQ(part(o.planes[0], 0, 24), join({{128, 16, 128, 16}}, 6));
    EXPECT_EQ(part(o.planes[0], 24, 24), join({{127, 235, 128, 235}}, 6));
}

TEST(BgrxToUyvy, CbIsTheLeftPixelsAndCrTheRightOnes)
{
    for (int const pixels : {2, 8}) { // tail and main loop
        outcome const o = convert({"bgrx_601::uyvy", pixels, 1, {join({blue, red}, pixels / 2)}});
        EXPECT_EQ(part(o.planes[0], 0, 4), (bytes{239, 41, 239, 81}));
    }
}

TEST(BgraToUyvy, TransparentIsBlack)
{
    outcome const o = convert({"bgra::uyvy", 10, 1, {join({white_with(0)}, 10)}});
    EXPECT_EQ(part(o.planes[0], 0, 20), join({{128, 16, 128, 16}}, 5));
}

TEST(BgraToUyvy, OpaqueWhiteIs236)
{
    outcome const o = convert({"bgra::uyvy", 8, 1, {join({white}, 8)}});
    EXPECT_EQ(part(o.planes[0], 0, 16), join({{127, 236, 128, 236}}, 4));
}

TEST(BgraToUyvy, TailVTakesTheCbWeights)
{
    // Pixel 9 red: Cb weights give 102, Cr weights would give 239.
    outcome const o = convert({"bgra::uyvy", 10, 1, {join({join({red}, 8), blue, red})}});
    EXPECT_EQ(o.planes[0][18], 102);
    EXPECT_EQ(o.planes[0][2], 239); // in the main loop
}

TEST(BgraToUyvy, ThirdPixelUsesFirstPixelsAlpha)
{
    bytes const source = join({white, white, white_with(0), white_with(0), white, white, white, white});
    outcome const o = convert({"bgra::uyvy", 8, 1, {source}});
    EXPECT_EQ(part(o.planes[0], 0, 16), join({{127, 236, 128, 236}}, 4));
    outcome const other = convert({"rgba::uyvy", 8, 1, {source}});
    EXPECT_EQ(part(other.planes[0], 0, 16), join({{127, 236, 128, 236}}, 4));
}

TEST(BgraToUyvy, FirstPixelsAlphaDarkensTheThird)
{
    bytes const source = join({white_with(0), white, white, white, white, white_with(0), white, white});
    outcome const o = convert({"bgra::uyvy", 8, 1, {source}});
    EXPECT_EQ(part(o.planes[0], 0, 16),
              (bytes{128, 16, 128, 236, 128, 16, 128, 236, 127, 236, 128, 16, 127, 236, 128, 16}));
}

TEST(BgraToUyvy, GreenWeighs80)
{
    // 254 x 80 / 128 = 158, and with 79 it would be 156.
    outcome const o = convert({"bgra::uyvy", 8, 1, {join({{0, 255, 0, 255}}, 8)}});
    EXPECT_EQ(o.planes[0][1], 16 + 158);
    outcome const plain = convert({"bgrx::uyvy", 8, 1, {join({{0, 254, 0, 255}}, 8)}});
    EXPECT_EQ(plain.planes[0][1], 16 + 156);
}

TEST(BgraToUyvyA, OnePixelIsNotOpaque)
{
    outcome const o = convert({"bgra::uyvy_a", 1, 1, {white}});
    EXPECT_FALSE(o.all_opaque);
    EXPECT_EQ(o.planes[0], bytes(8, untouched));
    EXPECT_EQ(o.planes[1], bytes(8, untouched));
}

TEST(BgraToUyvyA, OddLastPixelIsNotTested)
{
    outcome const o = convert({"bgra::uyvy_a", 9, 1, {join({join({white}, 8), white_with(0)})}});
    EXPECT_TRUE(o.all_opaque);
    EXPECT_EQ(part(o.planes[0], 16, 2), bytes(2, untouched));
    EXPECT_EQ(o.planes[1][8], untouched);
}

TEST(BgraToUyvyA, EveryAlphaOfABlockIsTested)
{
    for (std::size_t pixel = 0; pixel < 10; ++pixel) {
        bytes source = join({white}, 10);
        EXPECT_TRUE(convert({"bgra::uyvy_a", 10, 1, {source}}).all_opaque);
        source[pixel * 4 + 3] = 254;
        EXPECT_FALSE(convert({"bgra::uyvy_a", 10, 1, {source}}).all_opaque) << pixel;
    }
}

TEST(BgraToUyvyA, AlphaPlaneIsACopy)
{
    bytes source;
    for (unsigned char a = 10; a <= 100; a = static_cast<unsigned char>(a + 10))
        source = join({source, white_with(a)});
    outcome const o = convert({"bgra_601::uyvy_a", 10, 1, {source}});
    EXPECT_EQ(part(o.planes[1], 0, 10), (bytes{10, 20, 30, 40, 50, 60, 70, 80, 90, 100}));
}

TEST(BgraToUyvyA, NoLinesAreOpaqueButLinesWithoutPixelsAreNot)
{
    EXPECT_TRUE(convert({"bgra::uyvy_a", 10, 0, {{}}}).all_opaque);
    EXPECT_TRUE(convert({"rgba_601::uyvy_a", 10, -1, {{}}}).all_opaque);
    EXPECT_FALSE(convert({"bgra::uyvy_a", 0, 1, {{}}}).all_opaque);
    EXPECT_FALSE(convert({"bgra::uyvy_a", 0, 3, {{}}}).all_opaque);
}

// Two lines of three: blue red blue, red blue red. The middle pair is blue on the left and red on the right.
TEST(BgraToUyvyA, JoinedOddLinesPairAcrossTheLineEnd)
{
    outcome const o = convert({"bgra_601::uyvy_a", 3, 2, {join({blue, red}, 3)}});
    EXPECT_EQ(part(o.planes[0], 0, 12), join({{239, 41, 239, 81}}, 3));
    EXPECT_EQ(part(o.planes[1], 0, 6), bytes(6, 255));
    EXPECT_TRUE(o.all_opaque);
}

TEST(BgraToUyvyA, SeparateOddLinesLeaveTheirLastPixel)
{
    outcome const o = convert({"bgra_601::uyvy_a", 3, 2, {join({blue, red}, 4)}, {16, 8, 4}});
    EXPECT_EQ(part(o.planes[0], 0, 12), join({{239, 41, 239, 81}, bytes(4, untouched), {239, 41, 239, 81}}));
    EXPECT_EQ(part(o.planes[1], 0, 6), (bytes{255, 255, untouched, untouched, 255, 255}));
}

TEST(BgrToUyvy, OddWidthWritesAWholePair)
{
    outcome const o = convert({"bgr::uyvy", 7, 1, {join({{255, 255, 255}}, 8)}});
    EXPECT_EQ(part(o.planes[0], 0, 16), join({{127, 235, 128, 235}}, 4));
    EXPECT_EQ(part(o.planes[0], 16, 8), bytes(8, untouched));
}

TEST(BgrToUyvy, WidthOfOneIsAWholePair)
{
    // Blue, and red beyond the line.
    outcome const o = convert({"bgr::uyvy", 1, 1, {{255, 0, 0, 0, 0, 255}}});
    EXPECT_EQ(part(o.planes[0], 0, 4), (bytes{239, 16 + 15, 239, 16 + 46}));
}

} // namespace
} // namespace quillo::conversions
