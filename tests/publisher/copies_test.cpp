#include "publisher/picture_copy.h"
#include "publisher/sound_copy.h"
#include "tests/support/protocol_sender.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace quillo::publisher {
namespace {

using testing::video_format;

std::vector<unsigned char> counting_bytes(std::size_t count)
{
    std::vector<unsigned char> bytes(count);
    for (std::size_t k = 0; k < count; ++k)
        bytes[k] = static_cast<unsigned char>(k * 7 + k / 251);
    return bytes;
}

constexpr int height = 3;

void expect_three_bytes_of_four(int width)
{
    auto const body = video_format(width, height, SenderFourCC_BGRX);
    auto const sent = counting_bytes(slot_bytes(body));
    std::size_t const stride = static_cast<std::size_t>(width) * 3 + 5;
    std::vector<unsigned char> out(stride * height, 0xEE);
    copy_fill({body, sent.data()}, *checked(body), out.data(), stride);
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t b = 0; b < stride; ++b) {
            bool const inside = b < static_cast<std::size_t>(width) * 3;
            auto const expected = inside ? sent[(y * static_cast<std::size_t>(width) + b / 3) * 4 + b % 3] : 0xEE;
            ASSERT_EQ(out[y * stride + b], expected) << width << ' ' << y << ' ' << b;
        }
}

void expect_even_width(int width)
{
    auto const body = video_format(width, height, SenderFourCC_UYVA);
    auto const sent = counting_bytes(slot_bytes(body));
    auto const shape = *checked(body);
    std::size_t const stride = static_cast<std::size_t>(width) * 2 + 3;
    std::vector<unsigned char> out(stride * height, 0xEE);
    copy_fill({body, sent.data()}, shape, out.data(), stride);
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t b = 0; b < stride; ++b) {
            bool const inside = b < static_cast<std::size_t>(shape.width) * 2;
            auto const expected = inside ? sent[y * static_cast<std::size_t>(width) * 2 + b] : 0xEE;
            ASSERT_EQ(out[y * stride + b], expected) << width << ' ' << y << ' ' << b;
        }
}

TEST(picture_copy, bgr_takes_three_bytes_of_four_and_touches_nothing_else)
{
    for (int width = 1; width < 70; ++width)
        expect_three_bytes_of_four(width);
}

TEST(picture_copy, uyvy_is_copied_row_by_row_to_its_even_width)
{
    for (int width = 2; width < 70; ++width)
        expect_even_width(width);
}

void expect_alpha(int width, std::uint32_t fourcc)
{
    auto const body = video_format(width, height, fourcc);
    auto const sent = counting_bytes(slot_bytes(body));
    auto const shape = *checked(body);
    std::size_t const pixels = static_cast<std::size_t>(width) * height;
    std::size_t const stride = static_cast<std::size_t>(width) + 3;
    std::vector<unsigned char> out(stride * height, 0xEE);
    copy_alpha({body, sent.data()}, shape, out.data(), stride);
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < stride; ++x) {
            std::size_t const pixel = y * static_cast<std::size_t>(width) + x;
            unsigned char expected = 0xEE;
            if (x < static_cast<std::size_t>(shape.width))
                expected = fourcc == SenderFourCC_UYVA ? sent[pixels * 2 + pixel] : sent[pixel * 4 + 3];
            ASSERT_EQ(out[y * stride + x], expected) << width << ' ' << y << ' ' << x;
        }
}

TEST(picture_copy, alpha_is_taken_from_its_plane_or_from_every_fourth_byte)
{
    for (int width = 2; width < 70; ++width) {
        expect_alpha(width, SenderFourCC_UYVA);
        expect_alpha(width, SenderFourCC_BGRA);
    }
}

TEST(picture_copy, alpha_joins_its_pixels_and_nothing_else_is_touched)
{
    for (std::size_t pixels = 0; pixels < 70; ++pixels) {
        auto const bgr = counting_bytes(pixels * 3);
        auto alpha = counting_bytes(pixels + 1000);
        alpha.erase(alpha.begin(), alpha.begin() + 1000);
        std::vector<unsigned char> out(pixels * 4 + 8, 0xEE);
        join_alpha(bgr.data(), alpha.data(), out.data(), pixels);
        for (std::size_t b = 0; b < out.size(); ++b) {
            auto const expected = b >= pixels * 4 ? 0xEE : b % 4 == 3 ? alpha[b / 4] : bgr[b / 4 * 3 + b % 4];
            ASSERT_EQ(out[b], expected) << pixels << ' ' << b;
        }
    }
}

placed_sound block_of(std::vector<float> const& planar, int channels)
{
    return {{48000, channels}, static_cast<int>(planar.size()) / channels, planar.data(), 123456789, true};
}

std::vector<unsigned char> bytes_of(GstBuffer* buffer)
{
    std::vector<unsigned char> bytes(gst_buffer_get_size(buffer));
    gst_buffer_extract(buffer, 0, bytes.data(), bytes.size());
    return bytes;
}

TEST(sound_copy, s24be_is_interleaved_rounded_and_limited)
{
    gst_init(nullptr, nullptr);
    float const inf = std::numeric_limits<float>::infinity();
    std::vector<float> const planar{0.0f, 0.5f, -1.0f, 1.0f, std::nanf(""), -2.0f, inf, -inf};
    auto const bytes = bytes_of(as_s24be(block_of(planar, 2)).get());
    std::vector<unsigned char> const expected{0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // 0.0, NaN
                                              0x40, 0x00, 0x00, 0x80, 0x00, 0x00,  // 0.5, -2
                                              0x80, 0x00, 0x00, 0x7F, 0xFF, 0xFF,  // -1, inf
                                              0x7F, 0xFF, 0xFF, 0x80, 0x00, 0x00}; // 1, -inf
    EXPECT_EQ(bytes, expected);
}

TEST(sound_copy, buffers_carry_time_length_and_breaks)
{
    gst_init(nullptr, nullptr);
    std::vector<float> const planar(960);
    auto block = block_of(planar, 2);
    auto const following = as_s24be(block);
    EXPECT_EQ(GST_BUFFER_PTS(following.get()), 123456789u);
    EXPECT_EQ(GST_BUFFER_DURATION(following.get()), 10 * GST_MSECOND);
    EXPECT_FALSE(GST_BUFFER_FLAG_IS_SET(following.get(), GST_BUFFER_FLAG_DISCONT));
    block.follows = false;
    EXPECT_TRUE(GST_BUFFER_FLAG_IS_SET(as_stereo(block).get(), GST_BUFFER_FLAG_DISCONT));
}

TEST(sound_copy, null_is_silence)
{
    gst_init(nullptr, nullptr);
    placed_sound const silence{{48000, 3}, 4, nullptr, 0, true};
    EXPECT_EQ(bytes_of(as_s24be(silence).get()), std::vector<unsigned char>(4 * 3 * 3));
    EXPECT_EQ(bytes_of(as_stereo(silence).get()), std::vector<unsigned char>(4 * 2 * 4));
}

TEST(sound_copy, stereo_from_one_two_and_six_channels)
{
    gst_init(nullptr, nullptr);
    auto const pair = [](std::vector<float> const& planar, int channels) {
        auto const bytes = bytes_of(as_stereo(block_of(planar, channels)).get());
        std::vector<float> samples(bytes.size() / sizeof(float));
        std::memcpy(samples.data(), bytes.data(), bytes.size());
        return samples;
    };
    EXPECT_EQ(pair({0.25f}, 1), (std::vector<float>{0.25f, 0.25f}));
    EXPECT_EQ(pair({0.25f, 0.5f}, 2), (std::vector<float>{0.25f, 0.5f}));
    EXPECT_EQ(pair({0.25f, 0.5f, 1.0f, 1.0f}, 4), (std::vector<float>{0.25f, 0.5f}));
    auto const mixed = pair({0.1f, 0.2f, 0.4f, 1.0f, 0.04f, 0.08f}, 6);
    EXPECT_NEAR(mixed[0], 0.1 + (0.4 + 0.04) / std::sqrt(2.0), 1e-6);
    EXPECT_NEAR(mixed[1], 0.2 + (0.4 + 0.08) / std::sqrt(2.0), 1e-6);
}

} // namespace
} // namespace quillo::publisher
