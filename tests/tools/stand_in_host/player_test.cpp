#include "tests/tools/stand_in_host/test_host.h"
#include "tools/stand_in_host/pattern/counter_strip.h"

#include <gmock/gmock.h>

namespace quillo::stand_in {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Player : public TestHost
{
  protected:
    void SetUp() override
    {
        TestHost::SetUp();
        told->behaviour.on_push = [this](test_picture const& p) { pushes.push_back({p.time, p.mode, counter(p)}); };
    }

    // The counter of a picture whose bottom row comes first in memory.
    static long counter(test_picture const& p)
    {
        brightness_plane const plane{p.pixels + (p.bounds.bottom - 1) * static_cast<std::ptrdiff_t>(p.row_bytes) +
                                         (p.format == PrPixelFormat_VUYA_4444_8u_709 ? 2 : 1),
                                     -static_cast<std::ptrdiff_t>(p.row_bytes), bytes_per_pixel, p.bounds.right,
                                     p.bounds.bottom};
        auto const number = read_counter(plane);
        return number ? static_cast<long>(*number) : -1;
    }

    struct pushed
    {
        PrTime time;
        pmPlayMode mode;
        long counter;
    };

    std::vector<long> counters() const
    {
        std::vector<long> list;
        for (pushed const& p : pushes)
            list.push_back(p.counter);
        return list;
    }

    // Every frame's time is its number's.
    void expect_own_times(frame_rate rate) const
    {
        for (pushed const& p : pushes)
            EXPECT_EQ(p.time, p.counter * frame_ticks(rate));
    }

    std::vector<pushed> pushes; // the module's push calls come from the thread that plays
};

player_settings frames(std::int64_t count)
{
    player_settings settings;
    settings.push_limit = count;
    return settings;
}

TEST_F(Player, CallsInTheOrderOfAHost)
{
    auto const clip = make_pattern(small_pattern());
    EXPECT_EQ(play(*clip, frames(3)), outcome::ended);
    EXPECT_THAT(told->record.calls, ElementsAre("load", "Startup", "CreateInstance", "QueryVideoMode", "QueryVideoMode",
                                                "QueryAudioMode", "Activate", "StartPlaybackClock", "StopPlaybackClock",
                                                "Deactivate", "DisposeInstance", "Shutdown", "unload"));
    EXPECT_EQ(told->record.overlaps, 0);
    EXPECT_THAT(state.log.breaches(), IsEmpty());
    EXPECT_THAT(state.log.acquisitions(),
                ElementsAre(suite_event{"Premiere PPix Suite", 1}, suite_event{"Premiere Time Suite", 1},
                            suite_event{"Premiere Playmod Audio Suite", 4}));
    EXPECT_THAT(state.log.releases(),
                ElementsAre(suite_event{"Premiere PPix Suite", 1}, suite_event{"Never Acquired Suite", 9}));
    EXPECT_EQ(name, "Test é€😀");
}

TEST_F(Player, DescribesTheClipToTheInstance)
{
    pattern_settings settings = small_pattern({30000, 1001});
    settings.fields = field_order::lower_first;
    settings.channels = 6;
    auto const clip = make_pattern(settings);
    play(*clip, frames(1));
    ASSERT_EQ(told->record.instances.size(), 1u);
    tmInstance const i = told->record.instances[0];
    EXPECT_EQ(i.inVideoWidth, 64);
    EXPECT_EQ(i.inVideoHeight, 36);
    EXPECT_EQ(PrTime{i.inVideoFrameRate}, 8475667200);
    EXPECT_EQ(i.inVideoFieldType, prFieldsLowerFirst);
    EXPECT_EQ(i.inVideoPARNum, 1);
    EXPECT_EQ(i.inVideoPARDen, 1);
    EXPECT_EQ(i.inHasVideo, kPrTrue);
    EXPECT_EQ(i.inHasAudio, kPrTrue);
    EXPECT_EQ(i.inNumChannels, 6u);
    EXPECT_EQ(float{i.inAudioSampleRate}, 48000.0f);
    EXPECT_EQ(i.inAudioSampleType, kPrAudioSampleType_32BitFloat);
    EXPECT_EQ(static_cast<void*>(i.ioPrivateInstanceData), nullptr);
}

TEST_F(Player, PushesEveryFrameOnceWithItsTime)
{
    auto const clip = make_pattern(small_pattern());
    play(*clip, frames(20));
    EXPECT_THAT(counters(), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19));
    expect_own_times({25, 1});
    for (pushed const& p : pushes)
        EXPECT_EQ(p.mode, playmode_Playing);
    EXPECT_EQ(figures.pushed, 20);
    EXPECT_EQ(figures.dropped, 0);
    EXPECT_EQ(state.frames.counts().issued, 20);
    EXPECT_EQ(state.frames.counts().disposed, 20);
}

TEST_F(Player, PicturesAreAlignedAndPadded)
{
    pattern_settings settings = small_pattern();
    settings.width = 67;
    auto const clip = make_pattern(settings);
    std::vector<test_picture> seen;
    told->behaviour.on_push = [&](test_picture const& p) { seen.push_back(p); };
    play(*clip, frames(1));
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(seen[0].pixels) % 16, 0u);
    EXPECT_EQ(seen[0].row_bytes, 272);
    EXPECT_EQ(seen[0].bounds.right, 67);
    EXPECT_EQ(seen[0].format, PrPixelFormat_VUYA_4444_8u_709);
    EXPECT_EQ(seen[0].aspect_n, 1u);
}

TEST_F(Player, TakesTheFirstFormatOfferedOrTheForcedOne)
{
    auto const clip = make_pattern(small_pattern());
    std::vector<PrPixelFormat> seen;
    told->behaviour.on_push = [&](test_picture const& p) { seen.push_back(p.format); };
    told->behaviour.formats = {PrPixelFormat_ARGB_4444_8u, PrPixelFormat_BGRA_4444_8u, PrPixelFormat_VUYA_4444_8u_709};
    play(*clip, frames(1));
    player_settings only = frames(1);
    only.only = pixel_layout::vuya;
    play(*clip, only);
    EXPECT_THAT(seen, ElementsAre(PrPixelFormat_BGRA_4444_8u, PrPixelFormat_VUYA_4444_8u_709));
}

TEST_F(Player, NoCommonFormatIsAFailure)
{
    auto const clip = make_pattern(small_pattern());
    told->behaviour.formats = {PrPixelFormat_ARGB_4444_8u};
    EXPECT_THROW(play(*clip, frames(1)), module_failure);
    EXPECT_THAT(told->record.calls, ::testing::Not(::testing::Contains("Activate")));
    EXPECT_EQ(told->record.calls.back(), "unload");
}

TEST_F(Player, LoopsWithoutStoppingTheClock)
{
    auto const clip = make_pattern(small_pattern());
    player_settings settings = frames(12);
    settings.loop = true;
    settings.in_s = 0.4;
    settings.out_s = 0.6;
    play(*clip, settings);
    EXPECT_THAT(counters(), ElementsAre(10, 11, 12, 13, 14, 10, 11, 12, 13, 14, 10, 11));
    expect_own_times({25, 1});
    ASSERT_EQ(told->record.clocks.size(), 1u);
    tmPlaybackClock const c = told->record.clocks[0];
    EXPECT_EQ(PrTime{c.inStartTime}, 10 * 10160640000);
    EXPECT_EQ(PrTime{c.inInTime}, 10 * 10160640000);
    EXPECT_EQ(PrTime{c.inOutTime}, 15 * 10160640000);
    EXPECT_EQ(c.inLoop, kPrTrue);
    EXPECT_EQ(float{c.inSpeed}, 1.0f);
}

TEST_F(Player, EndsAtTheOutPoint)
{
    auto const clip = make_pattern(small_pattern());
    player_settings settings;
    settings.out_s = 0.2;
    EXPECT_EQ(play(*clip, settings), outcome::ended);
    EXPECT_THAT(counters(), ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(Player, FastLeavesFramesOut)
{
    auto const clip = make_pattern(small_pattern());
    player_settings settings = frames(5);
    settings.speed = 3;
    play(*clip, settings);
    EXPECT_THAT(counters(), ElementsAre(0, 3, 6, 9, 12));
    EXPECT_EQ(figures.dropped, 0);
    EXPECT_EQ(float{told->record.clocks[0].inSpeed}, 3.0f);
}

TEST_F(Player, BackwardsBeginsAtTheEnd)
{
    auto const clip = make_pattern(small_pattern());
    player_settings settings;
    settings.speed = -1;
    settings.out_s = 0.2;
    play(*clip, settings);
    EXPECT_THAT(counters(), ElementsAre(4, 3, 2, 1, 0));
    EXPECT_THAT(state.log.breaches(), IsEmpty());
}

TEST_F(Player, PausesStepsSeeksAndGoesOn)
{
    auto const clip = make_pattern(small_pattern());
    player_settings settings = frames(8);
    auto const push = told->behaviour.on_push;
    player* transport = nullptr;
    told->behaviour.on_push = [&](test_picture const& p) {
        push(p);
        if (pushes.size() == 3) {
            transport->post({command::step, 2});
            transport->post({command::seek, 4});
            transport->post({command::play});
        }
    };
    play(*clip, settings, [&](player& p) { transport = &p; });
    ASSERT_GE(pushes.size(), 7u);
    auto const still =
        std::find_if(pushes.begin(), pushes.end(), [](pushed const& p) { return p.mode == playmode_Stopped; });
    ASSERT_NE(still, pushes.end());
    long const before = std::prev(still)->counter;
    EXPECT_EQ(still[0].counter, before + 2);
    EXPECT_EQ(still[0].time, -1);
    EXPECT_EQ(still[1].counter, 100);
    EXPECT_EQ(still[1].time, -1);
    EXPECT_EQ(still[2].counter, 100);
    EXPECT_EQ(still[2].time, 100 * 10160640000);
    EXPECT_EQ(still[2].mode, playmode_Playing);
    EXPECT_EQ(figures.stills, 2);
    EXPECT_EQ(figures.starts, 2);
    EXPECT_THAT(state.log.breaches(), IsEmpty());
}

TEST_F(Player, ChangesSpeedByAStartWithoutAStop)
{
    auto const clip = make_pattern(small_pattern());
    auto const push = told->behaviour.on_push;
    told->behaviour.pulls_audio = false;
    player* transport = nullptr;
    told->behaviour.on_push = [&](test_picture const& p) {
        push(p);
        if (pushes.size() == 3)
            transport->post({command::speed, 2});
    };
    play(*clip, frames(10), [&](player& p) { transport = &p; });
    EXPECT_THAT(told->record.calls,
                ::testing::IsSupersetOf({"StartPlaybackClock", "StartPlaybackClock", "StopPlaybackClock"}));
    ASSERT_EQ(told->record.clocks.size(), 2u);
    EXPECT_EQ(float{told->record.clocks[1].inSpeed}, 2.0f);
    EXPECT_NE(static_cast<void*>(told->record.clocks[0].inCallbackContext),
              static_cast<void*>(told->record.clocks[1].inCallbackContext));
    std::size_t const n = pushes.size();
    EXPECT_EQ(pushes[n - 1].counter - pushes[n - 2].counter, 2);
    EXPECT_THAT(state.log.breaches(), IsEmpty());
}

TEST_F(Player, ScrubsToAndFro)
{
    auto const clip = make_pattern(small_pattern());
    player_settings settings = frames(30);
    settings.scrub = true;
    settings.speed = 4;
    settings.out_s = 1;
    play(*clip, settings);
    for (pushed const& p : pushes)
        EXPECT_EQ(p.mode, playmode_Scrubbing);
    auto const list = counters();
    auto const top = std::max_element(list.begin(), list.end());
    EXPECT_GT(*top, list.front());
    EXPECT_LT(*std::min_element(top, list.end()), *top);
    EXPECT_GE(figures.starts, 2);
    EXPECT_EQ(told->record.clocks[0].inPlayMode, playmode_Scrubbing);
    EXPECT_THAT(state.log.breaches(), IsEmpty());
}

TEST_F(Player, SlowPushesDropFramesButTheClockGoesOn)
{
    auto const clip = make_pattern(small_pattern());
    told->behaviour.push_blocks = 20; // five frames
    play(*clip, frames(6));
    EXPECT_GT(figures.dropped, 5);
    auto const list = counters();
    EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
    EXPECT_EQ(figures.dropped, list.back() + 1 - 6);
    expect_own_times({25, 1});
}

TEST_F(Player, PullsTheClipsSound)
{
    auto const clip = make_pattern(small_pattern());
    PrTime next = 0;
    long samples = 0;
    float peak = 0;
    told->behaviour.on_audio = [&](float const* const* channels, unsigned count, unsigned block, PrTime time) {
        EXPECT_EQ(count, 2u);
        EXPECT_EQ(time, next);
        next = time + block * 5292000ll;
        samples += block;
        for (unsigned k = 0; k < block; ++k) {
            EXPECT_EQ(channels[0][k], channels[1][k]);
            peak = std::max(peak, channels[0][k]);
        }
    };
    play(*clip, frames(10));
    EXPECT_GT(samples, 48000 * 10 / 25 - 960);
    EXPECT_NEAR(peak, 0.5, 0.01);
    EXPECT_EQ(figures.audio.underruns, 0);
    EXPECT_EQ(figures.audio.blocks, samples / 480);
    EXPECT_THAT(told->record.audio_errors, ::testing::Each(suiteError_NoError));
}

TEST_F(Player, WithoutSoundTheInstanceHasNone)
{
    auto const clip = make_pattern(small_pattern());
    player_settings settings = frames(3);
    settings.audio = false;
    play(*clip, settings);
    EXPECT_EQ(told->record.instances[0].inHasAudio, kPrFalse);
    EXPECT_THAT(told->record.audio_errors, IsEmpty());
    EXPECT_EQ(figures.pushed, 3);
}

TEST_F(Player, AcceptsFramesKeptUntilTheNextPush)
{
    auto const clip = make_pattern(small_pattern());
    told->behaviour.disposal = test_behaviour::with_next_push;
    play(*clip, frames(5));
    EXPECT_THAT(state.log.breaches(), IsEmpty());
    EXPECT_EQ(state.frames.counts().disposed, 5);
}

TEST_F(Player, ReportsFramesDisposedTwice)
{
    auto const clip = make_pattern(small_pattern());
    told->behaviour.disposal = test_behaviour::twice;
    play(*clip, frames(5));
    EXPECT_EQ(state.log.breaches().at("Dispose with a frame that was disposed before"), 5);
    EXPECT_EQ(state.frames.counts().disposed, 5);
}

TEST_F(Player, ReportsFramesNeverDisposed)
{
    auto const clip = make_pattern(small_pattern());
    told->behaviour.disposal = test_behaviour::never;
    play(*clip, frames(5));
    EXPECT_TRUE(has_breach("frames not disposed when the instance was"));
    EXPECT_EQ(state.frames.counts().outstanding(), 5);
}

TEST_F(Player, ReportsAClockThatGoesOnAfterItsStop)
{
    auto const clip = make_pattern(small_pattern());
    told->behaviour.callback_after_stop = true;
    player* transport = nullptr;
    auto const push = told->behaviour.on_push;
    told->behaviour.on_push = [&](test_picture const& p) {
        push(p);
        if (pushes.size() == 2)
            transport->post({command::pause});
    };
    int waits = 0;
    play(*clip, {}, [&](player& p) {
        transport = &p;
        p.on_progress = [&](progress const&) {
            if (has_breach("clock callback after StopPlaybackClock returned") || ++waits > 50)
                transport->post({command::quit});
        };
    });
    EXPECT_TRUE(has_breach("clock callback after StopPlaybackClock returned"));
}

TEST_F(Player, ReportsAClockSetBack)
{
    auto const clip = make_pattern(small_pattern());
    told->behaviour.negative_increment = true;
    play(*clip, frames(5));
    EXPECT_EQ(state.log.breaches().at("clock set back"), 1);
}

TEST_F(Player, AStandingClockIsAFailure)
{
    auto const clip = make_pattern(small_pattern());
    told->behaviour.clock_stands = true;
    told->behaviour.pulls_audio = false;
    player_settings settings = frames(5);
    settings.clock_patience = std::chrono::milliseconds(300);
    EXPECT_THROW(play(*clip, settings), module_failure);
    EXPECT_EQ(figures.pushed, 1); // the first frame is due at once
    EXPECT_EQ(told->record.calls.back(), "unload");
}

class PlayerThrown : public Player, public ::testing::WithParamInterface<char const*>
{
};

TEST_P(PlayerThrown, ExceptionsAreReportedAndTheModuleIsPutAway)
{
    auto const clip = make_pattern(small_pattern());
    told->behaviour.throws_in = GetParam();
    try {
        play(*clip, frames(3));
        FAIL() << "nothing was thrown";
    } catch (module_failure const& failure) {
        EXPECT_EQ(std::string(failure.what()), std::string("the module's ") + GetParam() + " threw: told to");
    }
    EXPECT_EQ(told->record.calls.back(), "unload");
    EXPECT_EQ(state.frames.counts().outstanding(), GetParam() == std::string("PushVideo") ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(In, PlayerThrown,
                         ::testing::Values("Startup", "CreateInstance", "QueryVideoMode", "StartPlaybackClock",
                                           "PushVideo"),
                         [](auto const& where) { return std::string(where.param); });

} // namespace
} // namespace quillo::stand_in
