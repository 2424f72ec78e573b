#include "tools/stand_in_host/histogram.h"
#include "tools/stand_in_host/media/color_matrix.h"
#include "tools/stand_in_host/media/orientation.h"
#include "tools/stand_in_host/negotiation.h"
#include "tools/stand_in_host/playback_clock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace quillo::stand_in {
namespace {

using namespace std::chrono_literals;

TEST(Histogram, QuantilesAreRightToASixteenth)
{
    histogram h;
    EXPECT_EQ(h.quantile_ms(0.5), 0);
    for (int k = 1; k <= 1000; ++k)
        h.add(std::chrono::microseconds(k));
    h.add(-1s);
    EXPECT_EQ(h.count(), 1001);
    EXPECT_NEAR(h.quantile_ms(0.5), 0.5, 0.5 / 16);
    EXPECT_NEAR(h.quantile_ms(0.99), 0.99, 0.99 / 16);
    EXPECT_EQ(h.quantile_ms(1), 1.0);
    EXPECT_EQ(h.max_ms(), 1.0);
}

TEST(PlaybackClock, MovesOnlyByItsCallback)
{
    journal log;
    bell news;
    playback_clock clock(log, news);
    void* const first = clock.arm();
    EXPECT_EQ(clock.elapsed(), 0);
    playback_clock::advance(first, 100);
    playback_clock::advance(first, 50);
    EXPECT_EQ(clock.elapsed(), 150);
    EXPECT_EQ(news.count(), 2u);
    void* const second = clock.arm(); // a start without a stop
    playback_clock::advance(first, 1000);
    EXPECT_EQ(clock.elapsed(), 0) << "the run before has ended";
    playback_clock::advance(second, 7);
    EXPECT_EQ(clock.elapsed(), 7);
    EXPECT_TRUE(log.breaches().empty());
    playback_clock::advance(second, -1);
    clock.stop();
    playback_clock::advance(second, 7);
    EXPECT_EQ(log.breaches().at("clock set back"), 1);
    EXPECT_EQ(log.breaches().at("clock callback after StopPlaybackClock returned"), 1);
}

TEST(ColorMatrix, AgreesWithTheFormulas)
{
    // BT.601 to BT.709 through R'G'B', for a grid of codes.
    color_matrix const matrix(bt601_limited, bt709_limited);
    int worst = 0;
    for (int y = 16; y <= 235; y += 3)
        for (int u = 16; u <= 240; u += 7)
            for (int v = 16; v <= 240; v += 7) {
                double const luma = (y - 16) / 219.0, pb = (u - 128) / 224.0, pr = (v - 128) / 224.0;
                double const r = luma + 1.402 * pr, b = luma + 1.772 * pb;
                double const g = (luma - 0.299 * r - 0.114 * b) / 0.587;
                double const y709 = 0.2126 * r + 0.7152 * g + 0.0722 * b;
                double const wanted[3] = {16 + 219 * y709, 128 + 224 * (b - y709) / 1.8556,
                                          128 + 224 * (r - y709) / 1.5748};
                unsigned char const in[3] = {static_cast<unsigned char>(y), static_cast<unsigned char>(u),
                                             static_cast<unsigned char>(v)};
                unsigned char out[3];
                matrix.apply({{&in[0], &in[1], &in[2]}}, {{&out[0], &out[1], &out[2]}}, 1);
                for (int c = 0; c < 3; ++c) {
                    double const limited = std::clamp(wanted[c], 0.0, 255.0);
                    worst = std::max(worst, static_cast<int>(std::abs(out[c] - limited) > 0.51));
                }
            }
    EXPECT_EQ(worst, 0);
    EXPECT_TRUE(color_matrix(bt709_limited, bt709_limited).is_identity());
    EXPECT_TRUE(color_matrix(rgb_full, rgb_full).is_identity());
    EXPECT_FALSE(matrix.is_identity());
}

TEST(Orientation, TurnsClockwiseAfterMirroring)
{
    // Stored:  1 2 3
    //          4 5 6
    unsigned char stored[6 * 4] = {1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 5, 0, 0, 0, 6, 0, 0, 0};
    auto shown = [&](char const* tag) {
        orientation const how = parse_orientation(tag);
        int const width = how.swaps_sides() ? 2 : 3;
        unsigned char bytes[6 * 4]{};
        copy_upright({pixel_layout::bgra, 3, 2, stored, 12}, how,
                     {pixel_layout::bgra, width, 6 / width, bytes, width * 4});
        std::string text;
        for (int k = 0; k < 6; ++k)
            text += static_cast<char>('0' + bytes[k * 4]);
        return text;
    };
    EXPECT_EQ(shown("rotate-0"), "123456");
    EXPECT_EQ(shown("rotate-90"), "415263");
    EXPECT_EQ(shown("rotate-180"), "654321");
    EXPECT_EQ(shown("rotate-270"), "362514");
    EXPECT_EQ(shown("flip-rotate-0"), "321654");
    EXPECT_EQ(shown("flip-rotate-180"), "456123");
    EXPECT_EQ(shown("nonsense"), "123456");
}

TEST(Negotiation, TakesTheFirstModeThatFits)
{
    video_description video;
    video.width = 720;
    video.height = 486;
    video.pixel_aspect_n = 10;
    video.pixel_aspect_d = 11;
    video.fields = field_order::lower_first;
    video_mode const vuya{0, 0, 0, 0, prFieldsAny, PrPixelFormat_VUYA_4444_8u_709, 0};
    video_mode const bgra{720, 486, 20, 22, prFieldsLowerFirst, PrPixelFormat_BGRA_4444_8u, 0};
    video_mode other_size = bgra;
    other_size.width = 1920;
    video_mode other_fields = bgra;
    other_fields.fields = prFieldsNone;
    video_mode other_matrix = vuya;
    other_matrix.format = PrPixelFormat_VUYA_4444_8u; // BT.601
    EXPECT_EQ(choose_mode({vuya, bgra}, video, {}), pixel_layout::vuya);
    EXPECT_EQ(choose_mode({vuya, bgra}, video, pixel_layout::bgra), pixel_layout::bgra);
    EXPECT_EQ(choose_mode({other_size, other_fields, other_matrix, bgra, vuya}, video, {}), pixel_layout::bgra);
    EXPECT_EQ(choose_mode({other_size, other_fields, other_matrix}, video, {}), std::nullopt);
    EXPECT_EQ(choose_mode({}, video, {}), std::nullopt);
}

} // namespace
} // namespace quillo::stand_in
