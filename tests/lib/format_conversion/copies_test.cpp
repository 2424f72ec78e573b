#include "lib/format_conversion/format_conversion.h"
#include "tests/support/example.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace quillo::conversions {
namespace {

namespace fc = Processing::FXlib::format_conversion;

bytes counting(std::size_t size)
{
    bytes values(size);
    std::iota(values.begin(), values.end(), static_cast<unsigned char>(1));
    return values;
}

bytes opaque_pixels(std::size_t pixels)
{
    bytes values = counting(pixels * 4);
    for (std::size_t i = 3; i < values.size(); i += 4)
        values[i] = 255;
    return values;
}

TEST(Alignment, StrideOf24IsNotAligned)
{
    alignas(64) unsigned char memory[64]{};
    EXPECT_TRUE(fc::is_aligned(memory, 32));
    EXPECT_FALSE(fc::is_aligned(memory, 24));
    EXPECT_FALSE(fc::is_aligned(memory + 8, 32));
}

TEST(Alignment, NegativeStridesCount)
{
    alignas(64) unsigned char memory[64]{};
    EXPECT_TRUE(fc::is_aligned(memory, -32));
    EXPECT_FALSE(fc::is_aligned(memory, -24));
}

TEST(Alignment, Avx2AsksForSixteenBytesToo)
{
    alignas(64) unsigned char memory[64]{};
    EXPECT_TRUE(fc::is_aligned_avx2(memory + 16, 32));
    EXPECT_TRUE(fc::is_aligned_avx2(memory, 48));
    EXPECT_FALSE(fc::is_aligned_avx2(memory + 8, 32));
    EXPECT_TRUE(fc::is_aligned_avx2(memory + 16, 32, memory + 48, -16));
    EXPECT_FALSE(fc::is_aligned_avx2(memory + 16, 32, memory + 48, 8));
}

TEST(Alignment, TwoPlanesMustBothBeAligned)
{
    alignas(64) unsigned char memory[64]{};
    EXPECT_TRUE(fc::is_aligned(memory, 32, memory + 16, -16));
    EXPECT_FALSE(fc::is_aligned(memory, 32, memory + 1, 16));
    EXPECT_FALSE(fc::is_aligned(memory, 32, memory, 20));
    EXPECT_FALSE(fc::is_aligned(memory + 4, 32, memory, 16));
    EXPECT_FALSE(fc::is_aligned(memory, 4, memory, 16));
}

TEST(BgraToBgra, OpaqueWhateverTheColours)
{
    bytes const source = opaque_pixels(10 * 3);
    outcome const o = convert({"bgra::bgra", 10, 3, {source}});
    EXPECT_TRUE(o.all_opaque);
    EXPECT_EQ(part(o.planes[0], 0, 120), source);
}

// Pixel 3 of a line is in the main loop, pixel 9 in the tail, of lines that are converted one by one or joined.
TEST(BgraToBgra, OneAlphaOf254IsEnough)
{
    for (int const stride : {40, 44})
        for (int line = 0; line < 3; ++line)
            for (int pixel = 0; pixel < 10; ++pixel) {
                bytes source = opaque_pixels(static_cast<std::size_t>(stride * 3 / 4));
                source[static_cast<std::size_t>(line * stride + pixel * 4 + 3)] = 254;
                EXPECT_FALSE(convert({"bgra::bgra", 10, 3, {source}, {stride, stride}}).all_opaque)
                    << stride << ' ' << line << ' ' << pixel;
            }
}

TEST(BgraToBgra, ColoursDoNotMatter)
{
    bytes source = opaque_pixels(9);
    for (std::size_t i = 0; i < source.size(); ++i)
        if (i % 4 != 3)
            source[i] = 0;
    EXPECT_TRUE(convert({"bgra::bgra", 9, 1, {source}}).all_opaque);
}

TEST(BgraToBgra, WithoutTestTheCopyIsStillMade)
{
    bytes const source = counting(44);
    outcome const o = convert({"bgra::bgra", 11, 1, {source}, {}, 0, false});
    EXPECT_EQ(part(o.planes[0], 0, 44), source);
}

TEST(BgraToBgra, NoLinesAreOpaque)
{
    for (int const height : {0, -1}) {
        outcome const o = convert({"bgra::bgra", 10, height, {{}}});
        EXPECT_TRUE(o.all_opaque);
        EXPECT_EQ(o.planes[0], bytes(8, untouched));
    }
}

TEST(BgraToBgra, LinesWithoutPixelsAreOpaque) { EXPECT_TRUE(convert({"bgra::bgra", 0, 3, {{}}}).all_opaque); }

TEST(BgraToBgra, BottomUpPicturesTurn)
{
    bytes const source = counting(3 * 20);
    bytes target(3 * 20);
    fc::bgra::bgra(source.data() + 40, -20, target.data(), 20, 5, 3, nullptr);
    EXPECT_EQ(target, join({part(source, 40, 20), part(source, 20, 20), part(source, 0, 20)}));

    bool opaque = true;
    std::fill(target.begin(), target.end(), untouched);
    fc::bgra::bgra(source.data() + 40, -20, target.data(), 20, 5, 3, &opaque);
    EXPECT_EQ(target, join({part(source, 40, 20), part(source, 20, 20), part(source, 0, 20)}));
    EXPECT_FALSE(opaque);
}

TEST(BgrToBgr, CopiesFourBytesAPixel)
{
    bytes const source = counting(2 * 48);
    outcome const o = convert({"bgr::bgr", 10, 2, {source}, {48, 48}});
    EXPECT_EQ(part(o.planes[0], 0, 40), part(source, 0, 40));
    EXPECT_EQ(part(o.planes[0], 40, 8), bytes(8, untouched));
    EXPECT_EQ(part(o.planes[0], 48, 40), part(source, 48, 40));
}

TEST(VuyaToVuya, OnlyByteThreeDecides)
{
    EXPECT_TRUE(convert({"vuya::vuya", 16, 2, {join({{0, 1, 2, 255}}, 32)}}).all_opaque);
    EXPECT_FALSE(convert({"vuya::vuya", 16, 2, {join({{255, 255, 255, 254}}, 32)}}).all_opaque);
}

TEST(YToY, WidthIsInBytes)
{
    bytes const source = counting(300);
    outcome const o = convert({"y::y", 150, 2, {source}});
    EXPECT_EQ(part(o.planes[0], 0, 300), source);
}

// 65536 x 65537 pixels are 2^32 + 65536: a run of 65536.
TEST(JoinedLines, PixelCountHas32Bits)
{
    constexpr int width = 65536;
    bytes const source = join({{1, 2, 3, 255}}, width);
    bytes target(source.size(), untouched);
    bool opaque = false;
    fc::bgra::bgra(source.data(), width * 4, target.data(), width * 4, width, width + 1, &opaque);
    EXPECT_EQ(target, source);
    EXPECT_TRUE(opaque);

    std::fill(target.begin(), target.end(), untouched);
    fc::vuyx::uyvy(source.data(), width * 4, target.data(), width * 2, width, width + 1);
    EXPECT_EQ(part(target, 0, width * 2), join({{2, 3, 1, 3}}, width / 2));
    EXPECT_EQ(part(target, width * 2, width * 2), bytes(width * 2, untouched));
}

} // namespace
} // namespace quillo::conversions
