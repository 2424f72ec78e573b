#include "tools/stand_in_host/pattern/counter_strip.h"
#include "tools/stand_in_host/pattern/pattern.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace quillo::stand_in {
namespace {

struct drawn
{
    drawn(source& clip, std::int64_t frame, pixel_layout layout_)
        : layout(layout_), width(clip.video().width), height(clip.video().height),
          bytes(static_cast<std::size_t>(width * height * bytes_per_pixel))
    {
        clip.draw(frame, view());
    }

    picture_view view() { return {layout, width, height, bytes.data(), width * bytes_per_pixel}; }
    std::vector<int> at(int x, int y)
    {
        unsigned char const* const p = view().row(y) + x * bytes_per_pixel;
        return {p[0], p[1], p[2], p[3]};
    }
    std::optional<std::uint32_t> counter()
    {
        int const component = layout == pixel_layout::vuya ? 2 : 1;
        return read_counter({bytes.data() + component, width * bytes_per_pixel, bytes_per_pixel, width, height});
    }

    pixel_layout layout;
    int width;
    int height;
    std::vector<unsigned char> bytes;
};

pattern_settings sized(int width, int height, pattern_kind kind = pattern_kind::bars, frame_rate rate = {25, 1})
{
    pattern_settings settings;
    settings.width = width;
    settings.height = height;
    settings.kind = kind;
    settings.rate = rate;
    return settings;
}

class CounterStrip : public ::testing::TestWithParam<std::tuple<int, int, pixel_layout>>
{
};

TEST_P(CounterStrip, IsReadBack)
{
    auto const [width, height, layout] = GetParam();
    for (pattern_kind const kind : {pattern_kind::bars, pattern_kind::alpha, pattern_kind::flash}) {
        auto const clip = make_pattern(sized(width, height, kind));
        for (std::int64_t const frame : {0ll, 1ll, 2ll, 0x5A5A5All, 0xFFFFFFll})
            EXPECT_EQ(drawn(*clip, frame, layout).counter(), static_cast<std::uint32_t>(frame));
        EXPECT_EQ(drawn(*clip, 0x1000005, layout).counter(), 5u) << "numbers wrap";
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, CounterStrip,
                         ::testing::Combine(::testing::Values(64, 97, 720, 1921), ::testing::Values(36, 486),
                                            ::testing::Values(pixel_layout::vuya, pixel_layout::bgra)));

TEST(CounterStripDamage, IsNoticed)
{
    auto const clip = make_pattern(sized(640, 360));
    drawn picture(*clip, 1234, pixel_layout::vuya);
    for (int cell = 0; cell < counter_cells; ++cell) {
        drawn damaged = picture;
        for (int x = cell * 20; x < cell * 20 + 20; ++x)
            for (int y = 0; y < counter_strip_rows(360); ++y)
                damaged.view().row(y)[x * 4 + 2] ^= 0xFF;
        EXPECT_EQ(damaged.counter(), std::nullopt) << cell;
    }
}

TEST(Pattern, BarsHaveTheirBt709Codes)
{
    auto const clip = make_pattern(sized(640, 360));
    drawn picture(*clip, 3, pixel_layout::vuya);
    // V, U, Y of the 75 % bars in BT.709.
    int const bars[8][3] = {{128, 128, 180}, {136, 44, 168}, {44, 147, 145}, {52, 63, 133},
                            {204, 193, 63},  {212, 109, 51}, {120, 212, 28}, {128, 128, 16}};
    for (int k = 0; k < 8; ++k) {
        auto const pixel = picture.at(k * 80 + 40, 100);
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(pixel[static_cast<std::size_t>(c)], bars[k][c], 1) << "bar " << k;
        EXPECT_EQ(pixel[3], 255);
    }
    EXPECT_THAT(drawn(*clip, 3, pixel_layout::bgra).at(120, 100), ::testing::ElementsAre(0, 191, 191, 255));
}

TEST(Pattern, AlphaRampGoesFromNothingToAll)
{
    auto const clip = make_pattern(sized(640, 360, pattern_kind::alpha));
    drawn picture(*clip, 0, pixel_layout::bgra);
    EXPECT_EQ(picture.at(0, 350)[3], 0);
    EXPECT_EQ(picture.at(639, 350)[3], 255);
    EXPECT_NEAR(picture.at(320, 350)[3], 127, 1);
    EXPECT_EQ(picture.at(320, 100)[3], 255);
}

TEST(Pattern, DrawsOnlyWhatMovesWhereItDrewBefore)
{
    auto const clip = make_pattern(sized(320, 180));
    auto const other = make_pattern(sized(320, 180, pattern_kind::alpha));
    std::uint64_t note = 0;
    std::vector<unsigned char> bytes(320 * 180 * 4);
    picture_view const view{pixel_layout::vuya, 320, 180, bytes.data(), 320 * 4, &note};
    for (int frame : {0, 7, 25}) {
        clip->draw(frame, view);
        EXPECT_EQ(bytes, drawn(*clip, frame, pixel_layout::vuya).bytes);
    }
    other->draw(3, view);
    EXPECT_EQ(bytes, drawn(*other, 3, pixel_layout::vuya).bytes);
}

class FlashAndBeep : public ::testing::TestWithParam<frame_rate>
{
};

TEST_P(FlashAndBeep, BeginTogether)
{
    frame_rate const rate = GetParam();
    auto const clip = make_pattern(sized(160, 90, pattern_kind::flash, rate));
    point const where = flash_center(160, 90);
    int flashes = 0;
    bool before = false;
    for (int frame = 0; frame < 130; ++frame) {
        bool const lit = drawn(*clip, frame, pixel_layout::bgra).at(where.x, where.y)[0] > 128;
        if (lit && !before) {
            ++flashes;
            // The frame's time in samples, and what sounds around it.
            auto const begin = static_cast<std::int64_t>(std::llround(48000.0 * frame * rate.d / rate.n));
            float left[200], right[200];
            float* const channels[2] = {left, right};
            clip->read_audio(begin - 100, 200, channels);
            for (int k = 0; k <= 100; ++k)
                ASSERT_EQ(left[k], 0.0f) << "frame " << frame << " sample " << k;
            EXPECT_GT(left[101], 0.0f);
            EXPECT_NEAR(left[112], 0.5, 0.01) << "a quarter of the period later";
            EXPECT_EQ(left[150], right[150]);
        }
        before = lit;
    }
    EXPECT_GE(flashes, 2);
}

INSTANTIATE_TEST_SUITE_P(Rates, FlashAndBeep,
                         ::testing::Values(frame_rate{24000, 1001}, frame_rate{25, 1}, frame_rate{30000, 1001},
                                           frame_rate{50, 1}, frame_rate{60000, 1001}, frame_rate{60, 1}));

TEST(Pattern, SoundIsTheSameInAnyBlocks)
{
    auto const clip = make_pattern(sized(64, 36));
    std::vector<float> whole(96000), parts(96000), other(96000);
    float* one[2] = {whole.data(), other.data()};
    clip->read_audio(0, 96000, one);
    for (int at = 0; at < 96000; at += 441) {
        float* some[2] = {parts.data() + at, other.data()};
        clip->read_audio(at, std::min(441, 96000 - at), some);
    }
    EXPECT_EQ(whole, parts);
    long sounding = 0;
    for (float s : whole)
        sounding += s != 0 ? 1 : 0;
    EXPECT_NEAR(static_cast<double>(sounding), 2 * 3840, 400); // 80 ms a second, zero crossings aside
}

} // namespace
} // namespace quillo::stand_in
