// What the meters of the page say about sound whose levels are known.
#include "publisher/page/sound_levels.h"

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace quillo::publisher {
namespace {

constexpr int rate = 48000;
constexpr double sine_below_peak_db = 3.0103; // its effective value

// One channel after the other, each a sine of 1 kHz with its own peak.
std::vector<float> sines(std::vector<double> const& peaks_db, int samples)
{
    std::vector<float> planar;
    for (double const db : peaks_db)
        for (int s = 0; s < samples; ++s)
            planar.push_back(
                static_cast<float>(std::pow(10, db / 20) * std::sin(2 * std::numbers::pi * 1000 * s / rate)));
    return planar;
}

TEST(level_meter, sines_are_told_in_decibels_below_full_scale)
{
    std::vector<double> const peaks{0, -6, -10, -20, -40, -55};
    auto const planar = sines(peaks, rate / 10);
    level_meter meter;
    meter.add(planar.data(), static_cast<int>(peaks.size()), rate / 10);
    auto const levels = meter.take();
    ASSERT_EQ(levels.size(), peaks.size());
    for (std::size_t c = 0; c < peaks.size(); ++c) {
        EXPECT_NEAR(levels[c].peak_db, peaks[c], 0.05) << c;
        EXPECT_NEAR(levels[c].average_db, peaks[c] - sine_below_peak_db, 0.05) << c;
    }
}

TEST(level_meter, tells_what_came_since_it_was_asked)
{
    level_meter meter;
    auto const loud = sines({-3}, 480), quiet = sines({-30}, 480);
    meter.add(loud.data(), 1, 480);
    meter.take();
    meter.add(quiet.data(), 1, 480);
    EXPECT_NEAR(meter.take()[0].peak_db, -30, 0.05);
    // Half of it silent: the peak stays, the average loses 3 dB.
    meter.add(quiet.data(), 1, 480);
    meter.add(nullptr, 1, 480);
    auto const half = meter.take();
    EXPECT_NEAR(half[0].peak_db, -30, 0.05);
    EXPECT_NEAR(half[0].average_db, -30 - sine_below_peak_db - 3.0103, 0.05);
}

TEST(level_meter, tells_nothing_when_nothing_came)
{
    level_meter meter;
    EXPECT_TRUE(meter.take().empty());
    auto const loud = sines({-3}, 480);
    meter.add(loud.data(), 1, 480);
    EXPECT_EQ(meter.take().size(), 1u);
    EXPECT_TRUE(meter.take().empty());
}

TEST(level_meter, silence_and_what_is_no_number_are_the_bottom_of_the_scale)
{
    level_meter meter;
    meter.add(nullptr, 2, 480);
    for (auto const& of : meter.take()) {
        EXPECT_EQ(of.peak_db, silence_db);
        EXPECT_EQ(of.average_db, silence_db);
    }
    std::vector<float> const broken(480, std::numeric_limits<float>::quiet_NaN());
    meter.add(broken.data(), 1, 480);
    auto const levels = meter.take();
    ASSERT_EQ(levels.size(), 1u);
    EXPECT_EQ(levels[0].peak_db, silence_db);
    EXPECT_EQ(levels[0].average_db, silence_db);
}

TEST(sound_levels, are_those_of_the_sources_channels)
{
    gst_init(nullptr, nullptr);
    auto const from = std::make_shared<source>(introduction{}, "name", [] {});
    std::vector<double> const peaks{-6, -18, -30, -42};
    int const channels = static_cast<int>(peaks.size());
    from->audio_format({rate, channels});
    auto levels = std::make_unique<sound_levels>(from);
    EXPECT_TRUE(from->wanted());
    levels->take();
    auto const planar = sines(peaks, 480);
    for (int k = 1; k <= 5; ++k)
        from->audio({{rate, channels}, 480, false, planar.data(), k * 100'000, monotonic_ns() + k * 10'000'000});
    auto const seen = levels->take();
    ASSERT_EQ(seen.size(), peaks.size());
    for (std::size_t c = 0; c < peaks.size(); ++c) {
        EXPECT_NEAR(seen[c].peak_db, peaks[c], 0.05) << c;
        EXPECT_NEAR(seen[c].average_db, peaks[c] - sine_below_peak_db, 0.05) << c;
    }
    levels.reset();
    EXPECT_FALSE(from->wanted());
}

} // namespace
} // namespace quillo::publisher
