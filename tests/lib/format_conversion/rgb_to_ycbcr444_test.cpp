#include "tests/support/example.h"

#include <gtest/gtest.h>

namespace quillo::conversions {
namespace {

// One pixel as a whole block would give it: Y, Cb, Cr, A.
bytes in_a_block(char const* name, bytes const& pixel)
{
    return part(convert({name, 8, 1, {join({pixel}, 8)}}).planes[0], 0, 4);
}

TEST(BgraToYcbcra, BlackAndWhite)
{
    EXPECT_EQ(in_a_block("bgra_601::ycbcra", {0, 0, 0, 255}), (bytes{16, 128, 128, 255}));
    EXPECT_EQ(in_a_block("bgra_601::ycbcra", {255, 255, 255, 77}), (bytes{235, 127, 128, 77}));
}

TEST(BgrxToCrcbyx, PureBlue)
{
    outcome const o = convert({"bgrx_709::crcbyx", 8, 1, {join({{255, 0, 0, 9}}, 8)}});
    EXPECT_EQ(part(o.planes[0], 0, 32), join({{118, 239, 31, 255}}, 8));
}

bytes const pixel_a{10, 200, 30, 7};
bytes const pixel_b{220, 40, 150, 8};
bytes const pixel_c{90, 160, 250, 9};

TEST(BgraToYcbcra, NinthPixelStoresYAndCrInTheFirst)
{
    bytes const a = in_a_block("bgra_601::ycbcra", pixel_a);
    bytes const b = in_a_block("bgra_601::ycbcra", pixel_b);
    outcome const o = convert({"bgra_601::ycbcra", 9, 1, {join({join({pixel_a}, 8), pixel_b})}});
    EXPECT_EQ(part(o.planes[0], 0, 4), (bytes{b[0], a[1], b[2], 7}));
    EXPECT_EQ(part(o.planes[0], 4, 28), join({a}, 7));
    EXPECT_EQ(part(o.planes[0], 32, 4), (bytes{untouched, b[1], untouched, 8}));
}

TEST(BgraToYcbcra, SinglePixelIsSwapped)
{
    bytes const a = in_a_block("bgra_601::ycbcra", pixel_a);
    outcome const o = convert({"bgra_601::ycbcra", 1, 1, {pixel_a}});
    EXPECT_EQ(part(o.planes[0], 0, 4), (bytes{a[2], a[1], a[0], 7}));
}

TEST(BgrxToYcbcrx, ThreePixelsEndInTheFirst)
{
    bytes const a = in_a_block("bgrx_601::ycbcrx", pixel_a);
    bytes const b = in_a_block("bgrx_601::ycbcrx", pixel_b);
    bytes const c = in_a_block("bgrx_601::ycbcrx", pixel_c);
    outcome const o = convert({"bgrx_601::ycbcrx", 3, 1, {join({pixel_a, pixel_b, pixel_c})}});
    EXPECT_EQ(part(o.planes[0], 0, 12),
              (bytes{c[2], a[1], c[0], 255, untouched, b[1], untouched, 255, untouched, c[1], untouched, 255}));
}

// Where Y and Cr of a tail go, by family and order; values of a block are Y Cb Cr or Cr Cb Y.
TEST(RgbToYcbcr444, TailStoresOfEveryFamily)
{
    struct row
    {
        char const* name;
        bool y_first_in_block;
        bool y_to_byte_0_when_short;
        bool y_to_byte_0;
    };
    for (row const& r : {row{"bgra::ycbcra", true, false, true}, row{"bgrx::ycbcrx", true, true, false},
                         row{"bgra::crcbya", false, true, true}, row{"bgrx::crcbyx", false, false, false}}) {
        bytes const block = in_a_block(r.name, pixel_b);
        unsigned char const y = r.y_first_in_block ? block[0] : block[2];
        unsigned char const cr = r.y_first_in_block ? block[2] : block[0];
        ASSERT_NE(y, cr);
        outcome const one = convert({r.name, 1, 1, {pixel_b}});
        EXPECT_EQ(one.planes[0][0], r.y_to_byte_0_when_short ? y : cr) << r.name;
        EXPECT_EQ(one.planes[0][2], r.y_to_byte_0_when_short ? cr : y) << r.name;
        outcome const nine = convert({r.name, 9, 1, {join({join({pixel_a}, 8), pixel_b})}});
        EXPECT_EQ(nine.planes[0][0], r.y_to_byte_0 ? y : cr) << r.name;
        EXPECT_EQ(nine.planes[0][2], r.y_to_byte_0 ? cr : y) << r.name;
        outcome const two = convert({r.name, 2, 1, {join({pixel_a, pixel_b})}});
        EXPECT_EQ(two.planes[0][0], r.y_to_byte_0 ? y : cr) << r.name;
    }
}

// Two joined lines of five pixels are a run of ten: only pixels 8 and 9 are a tail.
TEST(BgraToYcbcra, JoinedLinesHaveOneTail)
{
    bytes const a = in_a_block("bgra_601::ycbcra", pixel_a);
    outcome const o = convert({"bgra_601::ycbcra", 5, 2, {join({pixel_a}, 10)}});
    EXPECT_EQ(part(o.planes[0], 0, 32), join({a}, 8));
    EXPECT_EQ(part(o.planes[0], 32, 8), join({{untouched, a[1], untouched, 7}}, 2));
}

} // namespace
} // namespace quillo::conversions
