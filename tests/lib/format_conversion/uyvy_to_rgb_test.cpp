#include "tests/support/example.h"

#include <gtest/gtest.h>

namespace quillo::conversions {
namespace {

// U, Y0, V, Y1
bytes grey(unsigned char y) { return {128, y, 128, y}; }

char const* const four_bytes[] = {"uyvy::bgra_601", "uyvy::bgra_709", "uyvy::rgba_601", "uyvy::rgba_709",
                                  "uyvy::bgrx_601", "uyvy::bgrx_709", "uyvy::rgbx_601", "uyvy::rgbx_709"};

TEST(UyvyToBgra, NothingForWidthsOfZeroAndOne)
{
    for (int const width : {0, 1}) {
        for (char const* const name : four_bytes)
            EXPECT_EQ(convert({name, width, 1, {grey(100)}}).planes[0], bytes(8, untouched)) << name;
        EXPECT_EQ(convert({"uyvy_a::bgra_709", width, 1, {grey(100), {1, 2}}}).planes[0], bytes(8, untouched));
        EXPECT_EQ(convert({"uyvy::r_g_b_601", width, 1, {grey(100)}}).planes[2], bytes(8, untouched));
    }
    EXPECT_EQ(convert({"uyvy::bgr_601", 0, 1, {{}}}).planes[0], bytes(8, untouched));
}

TEST(UyvyToBgr, WidthOfOneWritesAPair)
{
    outcome const o = convert({"uyvy::bgr_601", 1, 1, {grey(235)}});
    EXPECT_EQ(o.planes[0], join({bytes(6, 255), bytes(8, untouched)}));
}

TEST(UyvyToBgra, OddLastPixelIsNotWritten)
{
    outcome const o = convert({"uyvy::bgra_601", 9, 1, {join({grey(235)}, 5)}});
    EXPECT_EQ(part(o.planes[0], 0, 32), join({{253, 253, 253, 255}}, 8));
    EXPECT_EQ(part(o.planes[0], 32, 4), bytes(4, untouched));
    outcome const planes = convert({"uyvy::r_g_b_709", 17, 1, {join({grey(235)}, 9)}});
    for (bytes const& plane : planes.planes)
        EXPECT_EQ(part(plane, 0, 17), join({bytes(16, 253), {untouched}}));
    outcome const alpha = convert({"uyvy_a::rgba_601", 3, 1, {join({grey(16)}, 2), {7, 8, 9}}});
    EXPECT_EQ(part(alpha.planes[0], 0, 12),
              (bytes{0, 0, 0, 7, 0, 0, 0, 8, untouched, untouched, untouched, untouched}));
}

TEST(UyvyToBgr, OddLastPixelTakesAWholePair)
{
    outcome const o = convert({"uyvy::bgr_709", 3, 1, {join({grey(235)}, 2)}});
    EXPECT_EQ(part(o.planes[0], 0, 12), bytes(12, 255));
    EXPECT_EQ(part(o.planes[0], 12, 8), bytes(8, untouched));
}

TEST(UyvyToBgra, PeakWhiteIs253)
{
    for (int const width : {2, 8, 10, 16, 18}) {
        auto const pixels = static_cast<std::size_t>(width);
        for (char const* const name : four_bytes)
            EXPECT_EQ(part(convert({name, width, 1, {join({grey(235)}, width / 2)}}).planes[0], 0, 4 * pixels),
                      join({{253, 253, 253, 255}}, width))
                << name;
        for (char const* const name : {"uyvy::r_g_b_601", "uyvy::r_g_b_709"})
            for (bytes const& plane : convert({name, width, 1, {join({grey(235)}, width / 2)}}).planes)
                EXPECT_EQ(part(plane, 0, pixels), bytes(pixels, 253)) << name;
    }
}

TEST(UyvyToBgr, PeakWhiteIs255)
{
    for (char const* const name : {"uyvy::bgr_601", "uyvy::bgr_709"})
        EXPECT_EQ(part(convert({name, 16, 1, {join({grey(235)}, 8)}}).planes[0], 0, 48), bytes(48, 255)) << name;
}

TEST(UyvyToBgra, BlackIsZero)
{
    for (char const* const name : four_bytes)
        EXPECT_EQ(part(convert({name, 10, 1, {join({grey(16)}, 5)}}).planes[0], 0, 40), join({{0, 0, 0, 255}}, 10));
}

TEST(UyvyToBgr, BlackIsOffByOne)
{
    EXPECT_EQ(part(convert({"uyvy::bgr_601", 12, 1, {join({grey(16)}, 6)}}).planes[0], 0, 36), join({{1, 1, 0}}, 12));
    EXPECT_EQ(part(convert({"uyvy::bgr_709", 12, 1, {join({grey(16)}, 6)}}).planes[0], 0, 36), join({{1, 0, 1}}, 12));
}

TEST(UyvyToBgra, BrightestBlueWrapsToZeroInBlocks)
{
    bytes const source = join({{255, 255, 128, 255}}, 5);
    outcome const o = convert({"uyvy::bgra_709", 10, 1, {source}});
    for (std::size_t pixel = 0; pixel < 8; ++pixel)
        EXPECT_EQ(o.planes[0][4 * pixel], 0) << pixel;
    for (std::size_t pixel = 8; pixel < 10; ++pixel)
        EXPECT_EQ(o.planes[0][4 * pixel], 255) << pixel;
}

// Blue wraps for Y 255 from Cb 246 on, not yet at 245, and never for Y 238.
TEST(UyvyToBgra, WhereBlueWraps)
{
    auto blue = [](unsigned char y, unsigned char cb) {
        return convert({"uyvy::bgra_601", 8, 1, {join({{cb, y, 128, y}}, 4)}}).planes[0][0];
    };
    EXPECT_EQ(blue(255, 245), 255);
    EXPECT_EQ(blue(255, 246), 0);
    EXPECT_EQ(blue(238, 255), 255);
    EXPECT_EQ(blue(239, 255), 0);
}

// Chroma 128 adds 37 units to the luma of whole blocks: Y 17 gives 103 / 64 there and 66 / 64 in a tail, both 1; Y 18
// gives 177 / 64 = 2 and 140 / 64 = 2; Y 19 251 / 64 = 3 and 214 / 64 = 3; Y 20 325 / 64 = 5 and 288 / 64 = 4.
TEST(UyvyToBgra, ChromaByteAddsToTheLumaOfBlocks)
{
    outcome const o = convert({"uyvy::bgra_709", 10, 1, {join({grey(20)}, 5)}});
    EXPECT_EQ(o.planes[0][0], 5);
    EXPECT_EQ(o.planes[0][8 * 4], 4);
}

TEST(UyvyToBgra, ShortRunsAreTails)
{
    EXPECT_EQ(convert({"uyvy::bgra_709", 6, 1, {join({grey(20)}, 3)}}).planes[0][0], 4);
    EXPECT_EQ(convert({"uyvy::bgra_709", 8, 1, {join({grey(20)}, 4)}}).planes[0][0], 5);
    EXPECT_EQ(convert({"uyvy::r_g_b_709", 14, 1, {join({grey(20)}, 7)}}).planes[0][0], 4);
    EXPECT_EQ(convert({"uyvy::r_g_b_709", 16, 1, {join({grey(20)}, 8)}}).planes[0][0], 5);
}

TEST(UyvyToBgra, AnyOtherMatrixNumberIs709)
{
    bytes const source = join({{90, 100, 200, 150}}, 6);
    std::vector<bytes> const with_alpha{source, bytes(12, 9)};
    for (auto const* target : {"bgra", "rgba", "bgrx", "rgbx", "bgr"}) {
        std::string const name = std::string{"uyvy::"} + target;
        outcome const bt601 = convert({name + "_601", 12, 1, {source}});
        outcome const bt709 = convert({name + "_709", 12, 1, {source}});
        EXPECT_NE(bt601.planes, bt709.planes);
        EXPECT_EQ(convert({name, 12, 1, {source}, {}, 601}).planes, bt601.planes);
        for (int const other : {709, 0, 600, 602, 1001})
            EXPECT_EQ(convert({name, 12, 1, {source}, {}, other}).planes, bt709.planes) << name << ' ' << other;
    }
    for (auto const* target : {"bgra", "rgba"}) {
        std::string const name = std::string{"uyvy_a::"} + target;
        EXPECT_EQ(convert({name, 12, 1, with_alpha, {}, 601}).planes,
                  convert({name + "_601", 12, 1, with_alpha}).planes);
        for (int const other : {709, 0, 1001})
            EXPECT_EQ(convert({name, 12, 1, with_alpha, {}, other}).planes,
                      convert({name + "_709", 12, 1, with_alpha}).planes);
    }
}

TEST(UyvyToRGB, AnyOtherMatrixNumberIs601)
{
    bytes const source = join({{90, 100, 200, 150}}, 9);
    outcome const bt601 = convert({"uyvy::r_g_b_601", 18, 1, {source}});
    outcome const bt709 = convert({"uyvy::r_g_b_709", 18, 1, {source}});
    EXPECT_EQ(convert({"uyvy::r_g_b", 18, 1, {source}, {}, 709}).planes, bt709.planes);
    for (int const other : {601, 0, 708, 710, 1001, -1})
        EXPECT_EQ(convert({"uyvy::r_g_b", 18, 1, {source}, {}, other}).planes, bt601.planes) << other;
}

TEST(UyvyToBgr, TightPicturesGoLineByLine)
{
    bytes const source = join({join({grey(16)}, 6), join({grey(235)}, 6)});
    outcome const o = convert({"uyvy::bgr_601", 12, 2, {source}, {24, 36}});
    EXPECT_EQ(part(o.planes[0], 0, 72), join({join({{1, 1, 0}}, 12), bytes(36, 255)}));
}

TEST(UyvyToBgr, FourBytesAPixelJoinWithoutGaps)
{
    bytes const source = join({join({grey(16)}, 6), join({grey(235)}, 6)});
    outcome const o = convert({"uyvy::bgr_601", 12, 2, {source}, {24, 48}});
    EXPECT_EQ(part(o.planes[0], 0, 72), join({join({{1, 1, 0}}, 12), bytes(36, 255)}));
    EXPECT_EQ(part(o.planes[0], 72, 8), bytes(8, untouched));
    // Any other stride keeps lines apart.
    outcome const apart = convert({"uyvy::bgr_601", 12, 2, {source}, {24, 50}});
    EXPECT_EQ(part(apart.planes[0], 36, 14), bytes(14, untouched));
    EXPECT_EQ(part(apart.planes[0], 50, 36), bytes(36, 255));
}

} // namespace
} // namespace quillo::conversions
