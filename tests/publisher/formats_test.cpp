#include "publisher/formats.h"
#include "tests/support/protocol_sender.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace quillo::publisher {
namespace {

using testing::video_format;

TEST(formats, fill_of_each_layout)
{
    EXPECT_EQ(checked(video_format(1920, 1080, SenderFourCC_UYVY))->layout, fill::uyvy);
    EXPECT_EQ(checked(video_format(1920, 1080, SenderFourCC_UYVA)),
              checked(video_format(1920, 1080, SenderFourCC_UYVY)));
    EXPECT_EQ(checked(video_format(1920, 1080, SenderFourCC_BGRX))->layout, fill::bgr);
    EXPECT_EQ(checked(video_format(1920, 1080, SenderFourCC_BGRA)),
              checked(video_format(1920, 1080, SenderFourCC_BGRX)));
}

TEST(formats, half_a_pair_of_422_is_left_out)
{
    EXPECT_EQ(checked(video_format(1921, 1080, SenderFourCC_UYVY))->width, 1920);
    EXPECT_EQ(checked(video_format(1921, 1080, SenderFourCC_BGRX))->width, 1921);
    EXPECT_FALSE(checked(video_format(1, 1080, SenderFourCC_UYVY)));
}

TEST(formats, what_cannot_be_is_refused)
{
    auto const good = video_format(640, 480, SenderFourCC_UYVY);
    ASSERT_TRUE(checked(good));
    using body = protocol::video_format_body;
    for (std::function<void(body&)> const& spoil : std::initializer_list<std::function<void(body&)>>{
             [](body& b) { b.width = 0; }, [](body& b) { b.width = -640; }, [](body& b) { b.width = 16385; },
             [](body& b) { b.height = 0; }, [](body& b) { b.height = std::numeric_limits<int>::min(); },
             [](body& b) { b.fourcc = 0x32315659; }, [](body& b) { b.rate_n = 0; }, [](body& b) { b.rate_d = 0; },
             [](body& b) { b.rate_d = -1; }, [](body& b) { b.rate_n = 2'000'000; },
             [](body& b) { b.frame_format = 2; }}) {
        auto bad = good;
        spoil(bad);
        EXPECT_FALSE(checked(bad));
    }
}

TEST(formats, rate_is_reduced_and_aspect_is_of_the_pixels)
{
    auto body = video_format(720, 480, SenderFourCC_UYVY, 60000, 2002);
    body.aspect = 720.0f * 10 / (480.0f * 11);
    auto const format = checked(body);
    EXPECT_EQ(format->rate, (rational{30000, 1001}));
    EXPECT_EQ(format->pixel_aspect, (rational{10, 11}));
}

TEST(formats, senseless_aspect_means_square_pixels)
{
    auto body = video_format(720, 480, SenderFourCC_UYVY);
    for (float const aspect : {0.0f, -1.0f, std::nanf(""), std::numeric_limits<float>::infinity(), 1e9f, 1e-9f}) {
        body.aspect = aspect;
        EXPECT_EQ(checked(body)->pixel_aspect, (rational{1, 1})) << aspect;
    }
}

TEST(formats, nearest_fractions)
{
    EXPECT_EQ(nearest_fraction(1.0, 1000), (rational{1, 1}));
    EXPECT_EQ(nearest_fraction(64.0 / 45, 1000), (rational{64, 45}));
    EXPECT_EQ(nearest_fraction(1.0f / 3, 1000), (rational{1, 3}));
    auto const pi = nearest_fraction(3.14159265, 1000);
    EXPECT_EQ(pi, (rational{355, 113}));
}

TEST(formats, bytes_of_a_slot)
{
    EXPECT_EQ(slot_bytes(video_format(1920, 1080, SenderFourCC_UYVY)), 1920u * 1080 * 2);
    EXPECT_EQ(slot_bytes(video_format(1920, 1080, SenderFourCC_UYVA)), 1920u * 1080 * 3);
    EXPECT_EQ(slot_bytes(video_format(16384, 16384, SenderFourCC_BGRA)), 1ull << 30);
}

TEST(formats, sound_within_the_protocols_limits)
{
    EXPECT_TRUE(checked(protocol::audio_format_body{48000, 2}));
    EXPECT_TRUE(checked(protocol::audio_format_body{768000, 64}));
    EXPECT_FALSE(checked(protocol::audio_format_body{0, 2}));
    EXPECT_FALSE(checked(protocol::audio_format_body{48000, 0}));
    EXPECT_FALSE(checked(protocol::audio_format_body{48000, 65}));
    EXPECT_FALSE(checked(protocol::audio_format_body{768001, 2}));
}

} // namespace
} // namespace quillo::publisher
