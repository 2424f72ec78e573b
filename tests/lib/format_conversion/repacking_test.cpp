#include "tests/support/example.h"

#include <gtest/gtest.h>

namespace quillo::conversions {
namespace {

bytes line_of(unsigned char value, std::size_t length) { return bytes(length, value); }

TEST(Repacking, NoLinesWriteNothing)
{
    for (int const height : {0, -1})
        for (char const* const name : {"uyvy::y", "uyvy::yuy2", "uyvy::y_uv_422", "uyvy::y_uv_420", "uyvy::y_u_v_420",
                                       "y::uyvy", "uyvy::ycbcrx", "uyvy::uyvy"})
            for (bytes const& plane : convert({name, 8, height, {{}}}).planes)
                EXPECT_EQ(plane, bytes(8, untouched)) << name;
    for (bytes const& plane : convert({"uyvy_a::uyvy", 8, 0, {{}, {}}}).planes)
        EXPECT_EQ(plane, bytes(8, untouched));
}

TEST(YUvTo422, ASingleLineHasNoChroma)
{
    outcome const semi = convert({"y_uv::y_uv_to422", 4, 1, {line_of(5, 4), {}}});
    EXPECT_EQ(part(semi.planes[0], 0, 4), line_of(5, 4));
    EXPECT_EQ(semi.planes[1], bytes(8, untouched));
    outcome const planar = convert({"y_u_v::y_uv_to422", 4, 1, {line_of(5, 4), {}, {}}});
    EXPECT_EQ(planar.planes[1], bytes(8, untouched));
}

TEST(YUvTo422, OddHeightLeavesTheLastChromaLine)
{
    bytes const y = line_of(5, 12);
    outcome const semi = convert({"y_uv::y_uv_to422", 4, 3, {y, {1, 2, 3, 4}}});
    EXPECT_EQ(part(semi.planes[0], 0, 12), y);
    EXPECT_EQ(semi.planes[1], join({{1, 2, 3, 4}, {1, 2, 3, 4}, bytes(8, untouched)}));
    outcome const planar = convert({"y_u_v::y_uv_to422", 4, 3, {y, {1, 3}, {2, 4}}});
    EXPECT_EQ(planar.planes[1], join({{1, 2, 3, 4}, {1, 2, 3, 4}, bytes(8, untouched)}));
}

// U of line n is 10 n + 1, V is 10 n + 2.
bytes five_lines()
{
    bytes source;
    for (unsigned char n = 0; n < 5; ++n) {
        auto const u = static_cast<unsigned char>(10 * n + 1);
        source = join({source, {u, 50, static_cast<unsigned char>(u + 1), 60}});
    }
    return source;
}

TEST(UyvyTo420, FiveLinesGiveChromaOfLines0And2And4)
{
    outcome const semi = convert({"uyvy::y_uv_420", 2, 5, {five_lines()}});
    EXPECT_EQ(part(semi.planes[0], 0, 10), join({{50, 60}}, 5));
    EXPECT_EQ(semi.planes[1], join({{1, 2, 21, 22, 41, 42}, bytes(8, untouched)}));
    outcome const planar = convert({"uyvy::y_u_v_420", 2, 5, {five_lines()}});
    EXPECT_EQ(planar.planes[1], join({{1, 21, 41}, bytes(8, untouched)}));
    EXPECT_EQ(planar.planes[2], join({{2, 22, 42}, bytes(8, untouched)}));
}

TEST(YUvToYUv, FiveLinesCopyTwoOfChroma)
{
    outcome const o = convert({"y_uv::y_uv", 2, 5, {line_of(7, 10), {1, 2, 3, 4}}});
    EXPECT_EQ(part(o.planes[0], 0, 10), line_of(7, 10));
    EXPECT_EQ(o.planes[1], join({{1, 2, 3, 4}, bytes(8, untouched)}));
}

TEST(YUvToYUv, OddWidthDropsTheLastChromaByte)
{
    outcome const o = convert({"y_uv::y_uv", 5, 4, {line_of(7, 20), {1, 2, 3, 4, 5, 6, 7, 8, 9}}, {5, 5, 5, 5}});
    EXPECT_EQ(part(o.planes[1], 0, 9), (bytes{1, 2, 3, 4, untouched, 6, 7, 8, 9}));
}

TEST(YUVToYUv, InterleavesHalfTheLines)
{
    outcome const o = convert({"y_u_v::y_uv", 5, 5, {line_of(7, 25), {1, 3, 5, 7}, {2, 4, 6, 8}}, {5, 2, 2, 5, 5}});
    EXPECT_EQ(part(o.planes[1], 0, 9), (bytes{1, 2, 3, 4, untouched, 5, 6, 7, 8}));
}

TEST(UyvyAToUyvy, OddWidthWritesAWholePair)
{
    outcome const o = convert({"uyvy_a::uyvy", 1, 1, {{60, 70, 80, 90}, {255, 255}}});
    EXPECT_EQ(o.planes[0], join({{60, 70, 80, 90}, bytes(8, untouched)}));
}

TEST(UyvyToY, ExpansionDiffersInTheLastPixels)
{
    outcome const o = convert({"uyvy::y", 40, 1, {join({{128, 100}}, 40)}, {}, 1});
    EXPECT_EQ(part(o.planes[0], 0, 40), join({line_of(97, 32), line_of(255, 8)}));
    outcome const low = convert({"uyvy::y", 2, 1, {{128, 17, 128, 18}}, {}, 1});
    EXPECT_EQ(part(low.planes[0], 0, 2), (bytes{0, 255}));
}

TEST(UyvyToY, ExpansionEndsAt17And234)
{
    auto expanded = [](unsigned char y) {
        return convert({"uyvy::y", 32, 1, {join({{255, y}}, 32)}, {}, 1}).planes[0][31];
    };
    EXPECT_EQ(expanded(0), 0);
    EXPECT_EQ(expanded(17), 0);
    EXPECT_EQ(expanded(18), 1);
    EXPECT_EQ(expanded(233), 253);
    EXPECT_EQ(expanded(234), 255);
    EXPECT_EQ(expanded(255), 255);
}

TEST(UyvyToY, WithoutExpansionLumaIsKept)
{
    outcome const o = convert({"uyvy::y", 40, 1, {join({{1, 100}}, 40)}, {}, 0});
    EXPECT_EQ(part(o.planes[0], 0, 40), line_of(100, 40));
}

TEST(YToUyvy, CompressionMapsTheWholeRange)
{
    for (int const width : {4, 64}) {
        outcome const o = convert({"y::uyvy", width, 1, {join({{0, 255}}, width / 2)}, {}, 1});
        EXPECT_EQ(part(o.planes[0], 0, 2 * static_cast<std::size_t>(width)), join({{128, 16, 128, 235}}, width / 2));
    }
    outcome const plain = convert({"y::uyvy", 2, 1, {{0, 255}}, {}, 0});
    EXPECT_EQ(part(plain.planes[0], 0, 4), (bytes{128, 0, 128, 255}));
}

TEST(UyvyToYaUv, ExpansionWidensTheKeyAlone)
{
    // Block and tail give the same here.
    outcome const o =
        convert({"uyvy::ya_uv", 34, 1, {join({{1, 100, 2, 101}}, 17), join({{3, 100, 4, 234}}, 17)}, {}, 1});
    EXPECT_EQ(part(o.planes[0], 0, 68), join({{100, 97, 101, 255}}, 17));
    EXPECT_EQ(part(o.planes[1], 0, 34), join({{1, 2}}, 17));
}

TEST(UyvyAToUyvy, TransparentBlocksAre15And127)
{
    for (unsigned char const value : {0, 127, 255}) {
        outcome const o = convert({"uyvy_a::uyvy", 16, 1, {bytes(32, value), bytes(16, 0)}});
        EXPECT_EQ(part(o.planes[0], 0, 32), join({{127, 15, 127, 15}}, 8));
    }
}

TEST(UyvyAToUyvy, TransparentTailsDependOnTheSource)
{
    outcome const high = convert({"uyvy_a::uyvy", 2, 1, {{128, 16, 128, 16}, {0, 0}}});
    EXPECT_EQ(part(high.planes[0], 0, 4), (bytes{128, 16, 128, 16}));
    outcome const low = convert({"uyvy_a::uyvy", 2, 1, {{127, 15, 127, 15}, {0, 0}}});
    EXPECT_EQ(part(low.planes[0], 0, 4), (bytes{127, 15, 127, 15}));
}

TEST(UyvyAToUyvy, OpaqueIsUnchanged)
{
    bytes source;
    for (int i = 0; i < 36; ++i)
        source.push_back(static_cast<unsigned char>(7 * i));
    outcome const o = convert({"uyvy_a::uyvy", 18, 1, {source, bytes(18, 255)}});
    EXPECT_EQ(part(o.planes[0], 0, 36), source);
}

TEST(UyvyToYuy2, SwapsBytesAndStopsAtAnOddPixel)
{
    outcome const o = convert({"uyvy::yuy2", 3, 1, {{1, 2, 3, 4, 5, 6}}});
    EXPECT_EQ(o.planes[0], join({{2, 1, 4, 3, 6, 5}, bytes(8, untouched)}));
    EXPECT_EQ(convert({"yuy2::uyvy", 3, 1, {{1, 2, 3, 4, 5, 6}}}).planes, o.planes);
}

TEST(UyvyTo422, OddWidthSplits)
{
    bytes const source{1, 10, 2, 11, 3, 12, 4, 13};
    outcome const semi = convert({"uyvy::y_uv_422", 3, 1, {source}});
    EXPECT_EQ(semi.planes[0], join({{10, 11, 12}, bytes(8, untouched)}));
    EXPECT_EQ(semi.planes[1], join({{1, 2, 3}, bytes(8, untouched)}));
    outcome const planar = convert({"uyvy::y_u_v_422", 3, 1, {source}});
    EXPECT_EQ(planar.planes[1], join({{1}, bytes(8, untouched)}));
    EXPECT_EQ(planar.planes[2], join({{2}, bytes(8, untouched)}));
}

TEST(UyvyTo444, OddWidthKeepsItsPixelsAndTheLastPairsCr)
{
    bytes const source{1, 10, 2, 11, 3, 12, 4, 13};
    EXPECT_EQ(convert({"uyvy::ycbcrx", 3, 1, {source}}).planes[0],
              join({{10, 1, 2, 255, 11, 1, 2, 255, 12, 3, 4, 255}, bytes(8, untouched)}));
    EXPECT_EQ(convert({"uyvy_a::ycbcra", 3, 1, {source, {7, 8, 9}}}).planes[0],
              join({{10, 1, 2, 7, 11, 1, 2, 8, 12, 3, 4, 9}, bytes(8, untouched)}));
    EXPECT_EQ(convert({"uyvy_a::crcbya", 3, 1, {source, {7, 8, 9}}}).planes[0],
              join({{2, 1, 10, 7, 2, 1, 11, 8, 4, 3, 12, 9}, bytes(8, untouched)}));
}

TEST(UyvyAToYaUv, InterleavesLumaAndAlpha)
{
    outcome const o = convert({"uyvy_a::ya_uv", 3, 1, {{1, 10, 2, 11, 3, 12, 4, 13}, {7, 8, 9}}});
    EXPECT_EQ(o.planes[0], join({{10, 7, 11, 8, 12, 9}, bytes(8, untouched)}));
    EXPECT_EQ(o.planes[1], join({{1, 2, 3}, bytes(8, untouched)}));
}

} // namespace
} // namespace quillo::conversions
