#include "tools/stand_in_host/host_time.h"
#include "tools/stand_in_host/playback_plan.h"

#include <gtest/gtest.h>

namespace quillo::stand_in {
namespace {

TEST(HostTime, TicksOfTheCommonRates)
{
    EXPECT_EQ(frame_ticks({24000, 1001}), 10594584000);
    EXPECT_EQ(frame_ticks({24, 1}), 10584000000);
    EXPECT_EQ(frame_ticks({25, 1}), 10160640000);
    EXPECT_EQ(frame_ticks({30000, 1001}), 8475667200);
    EXPECT_EQ(frame_ticks({30, 1}), 8467200000);
    EXPECT_EQ(frame_ticks({50, 1}), 5080320000);
    EXPECT_EQ(frame_ticks({60000, 1001}), 4237833600);
    EXPECT_EQ(frame_ticks({60, 1}), 4233600000);
}

TEST(HostTime, RatesThatAreNearlyCommonBecomeSo)
{
    EXPECT_EQ(nearest_common_rate(2997, 100), (frame_rate{30000, 1001}));
    EXPECT_EQ(nearest_common_rate(2398, 100), (frame_rate{24000, 1001}));
    EXPECT_EQ(nearest_common_rate(24, 1), (frame_rate{24, 1}));
    EXPECT_EQ(nearest_common_rate(5994, 100), (frame_rate{60000, 1001}));
    EXPECT_EQ(nearest_common_rate(30, 2), (frame_rate{15, 1}));
}

TEST(HostTime, ScalingRoundsToNearestAndDoesNotOverflow)
{
    EXPECT_EQ(scaled(5, 1, 2), 3);
    EXPECT_EQ(scaled(-5, 1, 2), -2);
    EXPECT_EQ(scaled(-7, 1, 2), -3);
    EXPECT_EQ(scaled(91445760000000000, 48000, 254016000000), 17280000000);
}

playback_plan plan(double speed = 1, bool loop = false)
{
    playback_plan p;
    p.frame_length = 100;
    p.in = 10;
    p.out = 15;
    p.first = speed > 0 ? 10 : 14;
    p.speed = speed;
    p.loop = loop;
    return p;
}

TEST(PlaybackPlan, ForwardFromInToOut)
{
    auto const p = plan();
    EXPECT_EQ(p.frame(0), 10);
    EXPECT_EQ(p.frame(4), 14);
    EXPECT_EQ(p.frame(5), std::nullopt);
    EXPECT_EQ(p.due(3), 300);
    EXPECT_EQ(p.newest_due(299), 2);
    EXPECT_EQ(p.newest_due(300), 3);
    EXPECT_EQ(p.position(0), 1000);
    EXPECT_EQ(p.position(499), 1499);
    EXPECT_EQ(p.position(500), std::nullopt);
    EXPECT_EQ(p.next_break(0), 500);
}

TEST(PlaybackPlan, LoopsForEver)
{
    auto const p = plan(1, true);
    EXPECT_EQ(p.frame(5), 10);
    EXPECT_EQ(p.frame(5'000'000'003), 13);
    EXPECT_EQ(p.position(500), 1000);
    EXPECT_EQ(p.position(1234), 1234);
    EXPECT_EQ(p.next_break(499), 500);
    EXPECT_EQ(p.next_break(500), 1000);
    EXPECT_EQ(p.next_break(1'000'000'007), 1'000'000'500);
}

TEST(PlaybackPlan, BackwardsEntersFramesAtTheirEnd)
{
    auto const p = plan(-1);
    EXPECT_EQ(p.start_time(), 1500);
    EXPECT_EQ(p.frame(0), 14);
    EXPECT_EQ(p.frame(4), 10);
    EXPECT_EQ(p.frame(5), std::nullopt);
    EXPECT_EQ(p.position(100), 1400);
    EXPECT_EQ(p.position(501), std::nullopt);
    auto const looped = plan(-1, true);
    EXPECT_EQ(looped.frame(5), 14);
}

TEST(PlaybackPlan, FastShowsNoMoreFramesThanTheRateSays)
{
    auto const p = plan(2.5);
    EXPECT_EQ(p.frame(0), 10);
    EXPECT_EQ(p.frame(1), 12);
    EXPECT_EQ(p.frame(2), std::nullopt);
    EXPECT_EQ(p.due(1), 100);
    EXPECT_EQ(p.position(100), 1250);
    EXPECT_EQ(p.next_break(0), 200);
}

TEST(PlaybackPlan, SlowShowsEachFrameOnceAndLonger)
{
    auto const p = plan(0.25);
    EXPECT_EQ(p.frame(1), 11);
    EXPECT_EQ(p.due(1), 400);
    EXPECT_EQ(p.newest_due(399), 0);
    EXPECT_EQ(p.newest_due(400), 1);
    EXPECT_EQ(p.position(400), 1100);
}

} // namespace
} // namespace quillo::stand_in
