#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/pixels.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <vector>

namespace {

TEST(PixelFormatSize, OnlyFloatVuyaHasSixteenBytes)
{
    EXPECT_EQ(GetPixelFormatSize(PrPixelFormat_VUYA_4444_32f), 16);
    EXPECT_EQ(GetPixelFormatSize(PrPixelFormat_BGRA_4444_8u), 4);
    EXPECT_EQ(GetPixelFormatSize(PrPixelFormat_BGRA_4444_32f), 4);
    EXPECT_EQ(GetPixelFormatSize(0x61795556u), 4);
    EXPECT_EQ(GetPixelFormatSize(0u), 4);
}

TEST(RowPadding, RemovedRowsAreTight)
{
    std::vector<char> padded(3 * 20);
    std::iota(padded.begin(), padded.end(), char{1});
    std::vector<char> tight(3 * 16 + 1, 'x');
    RemoveRowPadding(padded.data(), tight.data(), 20, 4, 4, 3);
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t x = 0; x < 16; ++x)
            ASSERT_EQ(tight[row * 16 + x], static_cast<char>(1 + row * 20 + x));
    EXPECT_EQ(tight.back(), 'x');
}

TEST(RowPadding, AddedInPlaceFromTheLastRow)
{
    std::vector<char> picture(3 * 20, 'x');
    for (int i = 0; i < 48; ++i)
        picture[static_cast<std::size_t>(i)] = static_cast<char>(i);
    AddRowPadding(picture.data(), picture.data(), 20, 4, 4, 3);
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t x = 0; x < 16; ++x)
            ASSERT_EQ(picture[row * 20 + x], static_cast<char>(row * 16 + x));
    EXPECT_EQ(picture[2 * 20 + 16], 'x'); // padding behind the last row is nobody's
}

TEST(RowPadding, RowsThatOverlapTheirNewPlaceSurvive)
{
    std::vector<char> picture(2 * 17 + 16);
    for (int i = 0; i < 48; ++i)
        picture[static_cast<std::size_t>(i)] = static_cast<char>(i);
    AddRowPadding(picture.data(), picture.data(), 17, 4, 4, 3);
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t x = 0; x < 16; ++x)
            ASSERT_EQ(picture[row * 17 + x], static_cast<char>(row * 16 + x));
}

TEST(RowPadding, NothingWhenRowBytesAreNotLarger)
{
    std::vector<char> const from(48, 'a');
    for (csSDK_int32 const row_bytes : {16, 15, 0, -16}) {
        std::vector<char> to(48, 'b');
        RemoveRowPadding(from.data(), to.data(), row_bytes, 4, 4, 3);
        AddRowPadding(from.data(), to.data(), row_bytes, 4, 4, 3);
        EXPECT_EQ(to, std::vector<char>(48, 'b')) << row_bytes;
    }
}

TEST(From8uTo32f, EveryValueInOrder)
{
    std::array<unsigned char, 256> bytes;
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    std::array<float, 257> floats;
    floats[256] = 7;
    ConvertFrom8uTo32f(bytes.data(), floats.data(), 16, 4);
    for (int value = 0; value < 256; ++value)
        ASSERT_EQ(floats[static_cast<std::size_t>(value)], static_cast<float>(value) / 255.0f);
    EXPECT_EQ(floats[0], 0.0f);
    EXPECT_EQ(floats[255], 1.0f);
    EXPECT_EQ(floats[256], 7.0f);
}

TEST(From8uTo32f, NoPixelsForASizeOfZeroOrLess)
{
    unsigned char const byte = 9;
    float untouched = 3;
    ConvertFrom8uTo32f(&byte, &untouched, 0, 5);
    ConvertFrom8uTo32f(&byte, &untouched, 1, -1);
    ConvertFrom8uTo32f(&byte, &untouched, -1, -1);
    EXPECT_EQ(untouched, 3.0f);
}

TEST(BgraToVuyaFloat, PrimariesAndAlpha)
{
    // B, G, R, A
    std::array<float, 16> pixels{1, 0, 0, 0.25f, 0, 1, 0, 0.5f, 0, 0, 1, 0.75f, 1, 1, 1, 2};
    ConvertFromBGRA32fToVUYA32f(pixels.data(), 2, 2);
    std::array<float, 16> const expected{-0.081312f, 0.5f,       0.114f, 0.25f, -0.418688f, -0.331264f, 0.587f, 0.5f,
                                         0.5f,       -0.168736f, 0.299f, 0.75f, 0.0f,       0.0f,       1.0f,   2.0f};
    for (std::size_t i = 0; i < 12; ++i)
        EXPECT_EQ(pixels[i], expected[i]) << i;
    for (std::size_t i = 12; i < 16; ++i)
        EXPECT_NEAR(pixels[i], expected[i], 1e-6) << i;
}

csSDK_uint32 word_of(float v, float u, float y)
{
    float const vuya[4] = {v, u, y, 0.5f};
    csSDK_uint32 word = 0;
    ConvertFrom32fToV410(vuya, &word, 1, 1);
    return word;
}

TEST(FloatToV410, PlacesOfTheComponents)
{
    EXPECT_EQ(word_of(0, 0, 0), (512u << 22) + (64u << 12) + (512u << 2));
    EXPECT_EQ(word_of(0, 0, 1), (512u << 22) + (940u << 12) + (512u << 2));
    EXPECT_EQ(word_of(0.5f, 0, 0) >> 2 & 0x3FF, 960u);
    EXPECT_EQ(word_of(0, 0.5f, 0) >> 22, 960u);
    EXPECT_EQ(word_of(0, 0, 0) & 3, 0u);
}

TEST(FloatToV410, ClampsAndTakesSixtyFourAsTheLowestChromaToo)
{
    EXPECT_EQ(word_of(-0.5f, -0.5f, 0), (64u << 22) + (64u << 12) + (64u << 2));
    EXPECT_EQ(word_of(-100, -100, -100), (64u << 22) + (64u << 12) + (64u << 2));
    EXPECT_EQ(word_of(100, 100, 100), (960u << 22) + (940u << 12) + (960u << 2));
    float const infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(word_of(infinity, -infinity, infinity), (64u << 22) + (940u << 12) + (960u << 2));
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(word_of(nan, nan, nan), (64u << 22) + (64u << 12) + (64u << 2));
}

TEST(FloatToV410, HalfIsRoundedUp)
{
    // Y x 876 + 64.5 reaches 66 where Y x 876 is 1.5.
    EXPECT_EQ(word_of(0, 0, 1.4999f / 876) >> 12 & 0x3FF, 65u);
    EXPECT_EQ(word_of(0, 0, 1.5001f / 876) >> 12 & 0x3FF, 66u);
    EXPECT_EQ(word_of(1.4999f / 896, 0, 0) >> 2 & 0x3FF, 513u);
    EXPECT_EQ(word_of(1.5001f / 896, 0, 0) >> 2 & 0x3FF, 514u);
    EXPECT_EQ(word_of(0, -1.4999f / 896, 0) >> 22, 511u);
    EXPECT_EQ(word_of(0, -1.5001f / 896, 0) >> 22, 510u);
}

TEST(V410ToFloat, EveryValueOfEachComponent)
{
    for (csSDK_uint32 value = 0; value < 1024; ++value) {
        csSDK_uint32 const others = 300;
        csSDK_uint32 const words[3] = {value << 2 | others << 12 | others << 22,
                                       others << 2 | value << 12 | others << 22,
                                       others << 2 | others << 12 | value << 22 | 3};
        std::array<float, 12> vuya;
        ConvertFromV410To32f(words, vuya.data(), 3, 1);
        auto const chroma = [](csSDK_uint32 v) { return static_cast<float>(static_cast<double>(v) - 512) / 896.0f; };
        auto const luma = [](csSDK_uint32 v) { return static_cast<float>(static_cast<double>(v) - 64) / 876.0f; };
        ASSERT_EQ(vuya[0], chroma(value));
        ASSERT_EQ(vuya[1], chroma(others));
        ASSERT_EQ(vuya[2], luma(others));
        ASSERT_EQ(vuya[3], 1.0f);
        ASSERT_EQ(vuya[6], luma(value));
        ASSERT_EQ(vuya[9], chroma(value));
        ASSERT_EQ(vuya[8], chroma(others));
    }
}

TEST(V410, LegalValuesSurviveTheRoundTrip)
{
    for (csSDK_uint32 value = 0; value < 1024; ++value) {
        csSDK_uint32 const word = value << 22 | value << 12 | value << 2;
        float vuya[4];
        ConvertFromV410To32f(&word, vuya, 1, 1);
        csSDK_uint32 back = 0;
        ConvertFrom32fToV410(vuya, &back, 1, 1);
        csSDK_uint32 const chroma = std::min(std::max(value, 64u), 960u);
        csSDK_uint32 const luma = std::min(std::max(value, 64u), 940u);
        ASSERT_EQ(back, chroma << 22 | luma << 12 | chroma << 2) << value;
    }
}

} // namespace
