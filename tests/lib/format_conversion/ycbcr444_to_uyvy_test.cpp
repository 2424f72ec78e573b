#include "lib/format_conversion/line.h"
#include "tests/support/example.h"

#include <gtest/gtest.h>

namespace quillo::conversions {
namespace {

namespace line = Processing::FXlib::format_conversion::line;

// Cr, Cb, Y, A
bytes vuya(unsigned char alpha) { return {200, 100, 50, alpha}; }

TEST(VuyaToUyvyA, OpaqueHdPictureIsWholeBlocksAndReadsFalse)
{
    EXPECT_FALSE(convert({"vuya::uyvy_a", 1920, 1080, {join({vuya(255)}, 1920 * 1080)}}).all_opaque);
}

TEST(VuyaToUyvyA, WidthOf1918ReadsFalseToo)
{
    EXPECT_FALSE(convert({"vuya::uyvy_a", 1918, 1080, {join({vuya(255)}, 1918 * 1080)}}).all_opaque);
}

TEST(VuyaToUyvyA, FivePixelsBeyondTheBlocksReadTrue)
{
    // One pixel more than the picture: the last pair takes it.
    EXPECT_TRUE(convert({"vuya::uyvy_a", 1917, 1081, {join({vuya(255)}, 1917 * 1081 + 1)}}).all_opaque);
    bytes source = join({vuya(255)}, 1917 * 1081 + 1);
    source.back() = 254;
    EXPECT_FALSE(convert({"vuya::uyvy_a", 1917, 1081, {source}}).all_opaque);
}

TEST(VuyaToUyvyA, TenOpaquePixelsReadTrue)
{
    EXPECT_TRUE(convert({"vuya::uyvy_a", 10, 1, {join({vuya(255)}, 10)}}).all_opaque);
}

TEST(VuyaToUyvyA, PixelFiveIsNotExamined)
{
    bytes source = join({vuya(255)}, 10);
    source[5 * 4 + 3] = 0;
    EXPECT_TRUE(convert({"vuya::uyvy_a", 10, 1, {source}}).all_opaque);
}

TEST(VuyaToUyvyA, PixelTwoIsExamined)
{
    bytes source = join({vuya(255)}, 10);
    source[2 * 4 + 3] = 0;
    EXPECT_FALSE(convert({"vuya::uyvy_a", 10, 1, {source}}).all_opaque);
}

TEST(VuyaToUyvyA, WholeBlocksReadTrueWithTransparentUpperHalves)
{
    bytes const source = join({vuya(255), vuya(255), vuya(255), vuya(255), vuya(254), vuya(0), vuya(1), vuya(254)}, 2);
    EXPECT_TRUE(convert({"vuya::uyvy_a", 16, 1, {source}}).all_opaque);
    EXPECT_TRUE(convert({"ycbcra::uyvy_a", 16, 1, {source}}).all_opaque);
}

TEST(VuyaToUyvyA, NoLinesAreOpaqueButLinesWithoutPixelsAreNot)
{
    EXPECT_TRUE(convert({"vuya::uyvy_a", 10, 0, {{}}}).all_opaque);
    EXPECT_TRUE(convert({"vuya::uyvy_a", 10, -1, {{}}}).all_opaque);
    EXPECT_FALSE(convert({"vuya::uyvy_a", 0, 2, {{}}}).all_opaque);
    EXPECT_FALSE(convert({"vuya::uyvy_a", 0, 1, {{}}}).all_opaque);
}

TEST(VuyaToUyvyA, AlphaPlaneRepeatsTheFirstHalfOfABlock)
{
    bytes const source = join({vuya(10), vuya(20), vuya(30), vuya(40), vuya(50), vuya(60), vuya(70), vuya(80)});
    outcome const o = convert({"vuya::uyvy_a", 8, 1, {source}});
    EXPECT_EQ(part(o.planes[1], 0, 8), (bytes{10, 10, 20, 20, 30, 30, 40, 40}));
}

TEST(VuyaToUyvyA, AlphaPlaneOfTheTailIsItsOwn)
{
    outcome const o = convert({"vuya::uyvy_a", 2, 1, {join({vuya(10), vuya(20)})}});
    EXPECT_EQ(part(o.planes[1], 0, 2), (bytes{10, 20}));
    EXPECT_EQ(part(o.planes[0], 0, 4), (bytes{100, 50, 200, 50}));
}

TEST(YcbcraToUyvy, TransparentBlocksAreNearlyBlack)
{
    for (unsigned char const value : {0, 16, 127, 128, 255}) {
        outcome const o = convert({"ycbcra::uyvy", 8, 1, {join({{value, value, value, 0}}, 8)}});
        EXPECT_EQ(part(o.planes[0], 0, 16), join({{127, 15, 127, 15}}, 4)) << int{value};
    }
}

TEST(YcbcraToUyvy, TransparentTailsDependOnTheSource)
{
    // Y, Cb, Cr, A
    outcome const low = convert({"ycbcra::uyvy", 2, 1, {join({{15, 127, 127, 0}}, 2)}});
    EXPECT_EQ(part(low.planes[0], 0, 4), (bytes{127, 15, 127, 15}));
    outcome const high = convert({"ycbcra::uyvy", 2, 1, {join({{16, 128, 128, 0}}, 2)}});
    EXPECT_EQ(part(high.planes[0], 0, 4), (bytes{128, 16, 128, 16}));
}

TEST(YcbcraToUyvy, CrGoesWithTheOddPixelsAlpha)
{
    outcome const o = convert({"ycbcra::uyvy", 2, 1, {{90, 60, 200, 255, 90, 60, 10, 0}}});
    EXPECT_EQ(part(o.planes[0], 0, 4), (bytes{60, 90, 128, 16}));
}

TEST(YcbcraToUyvy, OpaquePixelsAreKept)
{
    outcome const o = convert({"ycbcra::uyvy", 10, 1, {join({{90, 60, 200, 255}}, 10)}});
    EXPECT_EQ(part(o.planes[0], 0, 20), join({{60, 90, 200, 90}}, 5));
}

TEST(VuyxToUyvy, OddWidthTakesThePixelBeyondEachLine)
{
    // Three pixels a line, padded to four: the fourth gives the last luma.
    bytes const source = join({{200, 100, 1, 0}, {201, 101, 2, 0}, {202, 102, 3, 0}, {203, 103, 4, 0}}, 2);
    outcome const o = convert({"vuyx::uyvy", 3, 2, {source}, {16, 12}});
    bytes const expected{100, 1, 200, 2, 102, 3, 202, 4};
    EXPECT_EQ(part(o.planes[0], 0, 8), expected);
    EXPECT_EQ(part(o.planes[0], 8, 4), bytes(4, untouched));
    EXPECT_EQ(part(o.planes[0], 12, 8), expected);
}

TEST(YcbcrxToUyvy, ChromaOfOddPixelsIsDropped)
{
    outcome const o = convert({"ycbcrx::uyvy", 8, 1, {join({{1, 2, 3, 4}, {5, 6, 7, 8}}, 4)}});
    EXPECT_EQ(part(o.planes[0], 0, 16), join({{2, 1, 3, 5}}, 4));
}

// Nine pixels: five pairs, the last with the pixel beyond the run.
TEST(YcbcrxKernel, OddCountReadsOnePixelBeyond)
{
    bytes const source = join({join({{1, 2, 3, 4}}, 9), {50, 60, 70, 80}});
    bytes target(24, untouched);
    line::ycbcrx::uyvy<false, false>(source.data(), target.data(), 9);
    EXPECT_EQ(part(target, 0, 16), join({{2, 1, 3, 1}}, 4));
    EXPECT_EQ(part(target, 16, 4), (bytes{2, 1, 3, 50}));
    EXPECT_EQ(part(target, 20, 4), bytes(4, untouched));
}

} // namespace
} // namespace quillo::conversions
