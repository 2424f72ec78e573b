#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

#include "tests/support/transmit_fixture.h"

namespace quillo::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

char second_context[] = "second";

// Opened once by one thread, waited for by others.
class gate
{
  public:
    void open()
    {
        std::lock_guard const lock(mutex);
        is_open = true;
        opened.notify_all();
    }
    void wait()
    {
        std::unique_lock lock(mutex);
        opened.wait(lock, [&] { return is_open; });
    }

  private:
    std::mutex mutex;
    std::condition_variable opened;
    bool is_open = false;
};

class Clock : public TransmitTest
{
  protected:
    // Everything that the audio road logs.
    std::vector<std::string> audio_lines() { return log.lines({"audio", "Quillolib_send_send_audio", "clock"}); }

    // Lets the clock thread send so many blocks, then stops it inside the next send and lets that one end.
    void play(std::size_t blocks)
    {
        sender.hold_audio_after(blocks);
        start_clock();
        ASSERT_TRUE(log.wait_for("Quillolib_send_send_audio", blocks + 1));
        stop_held();
    }

    void stop_held()
    {
        run_blocked([&] { EXPECT_EQ(stop_clock(), 0); }, [&] { sender.let_audio_run(); });
    }

    // Increments, rates and sizes as the log shows them for one block at this sample rate.
    std::vector<std::string> one_block_at(float sample_rate)
    {
        instance.inAudioSampleRate = sample_rate;
        log.clear();
        play(0);
        return log.lines({"audio 2nd", "Quillolib_send_send_audio", "clock"});
    }
};

TEST_F(Clock, SetsUpThePlayerPullsSendsAndTicks)
{
    create_instance();
    activate(true, true);
    clock.inPlayMode = quillo::host::playing;
    clock.inSpeed = 1.5f;
    clock.inLoop = kPrTrue;
    play(1);
    EXPECT_THAT(audio_lines(),
                ElementsAre("audio 2nd(42, 0, {48000, 480, zeros})", "audio 3rd(42, {100, 900, 300, 1}, 0, 1.5)",
                            "audio 11th(42, null, 480)",
                            "Quillolib_send_send_audio(sender, 48000 Hz, 2 x 480, at 0, samples, stride 1920)",
                            "clock(first, 2540160000)", "audio 11th(42, null, 480)",
                            "Quillolib_send_send_audio(sender, 48000 Hz, 2 x 480, at 100000, samples, stride 1920)",
                            "clock(first, 2540160000)", "audio 9th(42)"));
}

TEST_F(Clock, SendsTheSamplesOfEachChannelOneAfterTheOther)
{
    create_instance();
    activate(true, false);
    play(2);
    auto const blocks = sender.audios();
    ASSERT_EQ(blocks.size(), 3u);
    for (std::size_t block = 0; block < blocks.size(); ++block) {
        ASSERT_EQ(blocks[block].samples.size(), 960u);
        for (std::size_t sample = 0; sample < 960; ++sample)
            ASSERT_EQ(blocks[block].samples[sample], static_cast<float>((sample < 480 ? 0 : 1000) + block));
    }
}

TEST_F(Clock, OnlyScrubbingIsScrubbing)
{
    create_instance();
    activate(true, false);
    for (int const mode : {0, 1, 2, 3}) {
        clock.inPlayMode = static_cast<pmPlayMode>(mode);
        log.clear();
        play(0);
        EXPECT_THAT(log.lines({"audio 2nd"}), ElementsAre(mode == 2 ? "audio 2nd(42, 1, {48000, 480, zeros})"
                                                                    : "audio 2nd(42, 0, {48000, 480, zeros})"));
    }
}

TEST_F(Clock, CountsItsBlocksInSamples)
{
    create_instance();
    activate(true, false);
    EXPECT_THAT(one_block_at(44100),
                ElementsAre("audio 2nd(42, 0, {44100, 441, zeros})",
                            "Quillolib_send_send_audio(sender, 44100 Hz, 2 x 441, at 0, samples, stride 1764)",
                            "clock(first, 2540160000)"));
    EXPECT_THAT(one_block_at(96000),
                ElementsAre("audio 2nd(42, 0, {96000, 960, zeros})",
                            "Quillolib_send_send_audio(sender, 96000 Hz, 2 x 960, at 100000, samples, stride 3840)",
                            "clock(first, 2540160000)"));
}

TEST_F(Clock, BlocksOfARateThatIsNoMultipleOfAHundredAreSlightlyShort)
{
    create_instance();
    activate(true, false);
    // 22050.4 counts as 22050, of which 220 samples are 220/22050 s.
    EXPECT_THAT(one_block_at(22050.4f),
                ElementsAre("audio 2nd(42, 0, {22050, 220, zeros})",
                            "Quillolib_send_send_audio(sender, 22050 Hz, 2 x 220, at 0, samples, stride 880)",
                            "clock(first, 2534400000)"));
    EXPECT_THAT(one_block_at(22050.5f),
                ElementsAre("audio 2nd(42, 0, {22051, 220, zeros})",
                            "Quillolib_send_send_audio(sender, 22051 Hz, 2 x 220, at 100000, samples, stride 880)",
                            "clock(first, 2534285066)"));
}

TEST_F(Clock, SendsTwoChannelsAtLeast)
{
    create_instance();
    activate(true, false);
    struct
    {
        csSDK_uint32 has;
        int sends;
    } const cases[] = {{0, 2}, {1, 2}, {2, 2}, {3, 3}, {6, 6}, {16, 16}};
    for (auto const& channels : cases) {
        instance.inNumChannels = channels.has;
        host.channels_expected = channels.sends;
        log.clear();
        play(0);
        auto const block = sender.audios().back();
        EXPECT_EQ(block.frame.channelCount, channels.sends);
        EXPECT_EQ(block.samples.size(), 480u * static_cast<unsigned>(channels.sends));
        EXPECT_EQ(block.samples.back(), block.samples.front() + 1000.0f * static_cast<float>(channels.sends - 1));
    }
}

TEST_F(Clock, SamplesAreZeroUntilTheHostWritesThem)
{
    create_instance();
    activate(true, false);
    host.on_pull = [](float** channels, csSDK_uint32, PrTime&) -> prSuiteError {
        channels[1][479] = 0.5f;
        return suiteError_NoError;
    };
    play(0);
    auto const blocks = sender.audios();
    ASSERT_EQ(blocks.size(), 1u);
    for (std::size_t sample = 0; sample + 1 < 960; ++sample)
        ASSERT_EQ(blocks[0].samples[sample], 0.0f);
    EXPECT_EQ(blocks[0].samples[959], 0.5f);
}

TEST_F(Clock, AFailedPullSendsABlockWithoutDataAndTimeGoesOn)
{
    create_instance();
    activate(true, false);
    host.on_pull = [](float**, csSDK_uint32, PrTime& time) -> prSuiteError {
        time = 254016000000;
        return static_cast<prSuiteError>(suiteError_PlayModuleAudioNotStarted);
    };
    play(1);
    EXPECT_THAT(log.lines({"Quillolib_send_send_audio", "clock"}),
                ElementsAre("Quillolib_send_send_audio(sender, 48000 Hz, 2 x 480, at 0, null, stride 0)",
                            "clock(first, 2540160000)",
                            "Quillolib_send_send_audio(sender, 48000 Hz, 2 x 480, at 0, null, stride 0)",
                            "clock(first, 2540160000)"));
}

TEST_F(Clock, ATimecodeIsTheTimeThatTheHostDelivered)
{
    create_instance();
    activate(true, false);
    host.on_pull = [](float**, csSDK_uint32, PrTime& time) -> prSuiteError {
        time = 63504; // two and a half units
        return suiteError_NoError;
    };
    play(0);
    EXPECT_EQ(sender.audios().at(0).frame.timecode, 3);
}

TEST_F(Clock, EverythingHappensOnOneThreadOfItsOwn)
{
    create_instance();
    activate(true, false);
    play(1);
    auto const calls = log.calls();
    ASSERT_FALSE(calls.empty());
    std::thread::id clock_thread;
    for (call const& entry : calls) {
        if (entry.text.starts_with("Quillolib_send_send_video"))
            continue; // the flushes of the activation
        if (clock_thread == std::thread::id())
            clock_thread = entry.thread;
        EXPECT_EQ(entry.thread, clock_thread) << entry.text;
    }
    EXPECT_NE(clock_thread, std::this_thread::get_id());
}

TEST_F(Clock, WithoutAPlayerNothingIsSentAndTheClockStandsStill)
{
    create_instance();
    activate(true, false);
    host.set_up_result = static_cast<prSuiteError>(suiteError_PlayModuleAudioInitFailure);
    EXPECT_EQ(start_clock(), 0);
    ASSERT_TRUE(log.wait_for("audio 2nd"));
    // Not before a stop is there a new thread.
    EXPECT_EQ(start_clock(), 0);
    EXPECT_EQ(stop_clock(), 0);
    EXPECT_THAT(audio_lines(), ElementsAre("audio 2nd(42, 0, {48000, 480, zeros})"));

    host.set_up_result = suiteError_NoError;
    log.clear();
    play(0);
    EXPECT_EQ(log.count("clock"), 1u);
}

TEST_F(Clock, AStopBeforeTheFirstBlockStillSetsUpAndStopsThePlayer)
{
    create_instance();
    activate(true, false);
    gate may_set_up;
    host.on_set_up = [&] { may_set_up.wait(); };
    EXPECT_EQ(start_clock(), 0);
    run_blocked([&] { EXPECT_EQ(stop_clock(), 0); }, [&] { may_set_up.open(); });
    EXPECT_THAT(audio_lines(), ElementsAre("audio 2nd(42, 0, {48000, 480, zeros})",
                                           "audio 3rd(42, {100, 900, 300, 0}, 0, 1)", "audio 9th(42)"));
}

TEST_F(Clock, ASecondStartGivesTheRunningThreadTheNewRecords)
{
    create_instance();
    activate(true, false);
    sender.hold_audio_after(1);
    EXPECT_EQ(start_clock(), 0);
    ASSERT_TRUE(log.wait_for("Quillolib_send_send_audio", 2)); // the thread is inside its second send

    clock.inCallbackContext = second_context;
    instance.inPlayID = 43;
    instance.inAudioSampleRate = 44100; // the player was set up with the old one
    EXPECT_EQ(start_clock(), 0);
    sender.hold_audio_after(1);
    sender.let_audio_run();
    ASSERT_TRUE(log.wait_for("clock(second"));
    EXPECT_EQ(stop_clock(), 0);

    auto const lines = audio_lines();
    ASSERT_GE(lines.size(), 9u);
    EXPECT_EQ(log.count("audio 2nd"), 1u);
    EXPECT_EQ(log.count("audio 3rd"), 1u);
    EXPECT_EQ(log.count("clock(first"), 1u);
    EXPECT_EQ(lines[4], "clock(first, 2540160000)");
    EXPECT_EQ(lines[5], "audio 11th(42, null, 480)");
    EXPECT_EQ(lines[7], "clock(second, 2540160000)");
    EXPECT_EQ(lines.back(), "audio 9th(43)");
    EXPECT_EQ(log.count("audio 11th(42"), 2u);
    EXPECT_EQ(log.count("audio 11th(43"), log.count("clock(second") - 1);
}

TEST_F(Clock, TheHostsRecordsAreNotReadAfterTheStart)
{
    create_instance();
    activate(true, false);
    gate may_set_up;
    host.on_set_up = [&] { may_set_up.wait(); };
    sender.hold_audio_after(0);
    start_clock();
    void* const own = instance.ioPrivateInstanceData;
    std::memset(static_cast<void*>(&clock), 0x77, sizeof clock);
    std::memset(static_cast<void*>(&instance), 0x77, sizeof instance);
    instance.ioPrivateInstanceData = own;
    may_set_up.open();
    ASSERT_TRUE(log.wait_for("Quillolib_send_send_audio"));
    stop_held();
    EXPECT_THAT(audio_lines(),
                ElementsAre("audio 2nd(42, 0, {48000, 480, zeros})", "audio 3rd(42, {100, 900, 300, 0}, 0, 1)",
                            "audio 11th(42, null, 480)",
                            "Quillolib_send_send_audio(sender, 48000 Hz, 2 x 480, at 0, samples, stride 1920)",
                            "clock(first, 2540160000)", "audio 9th(42)"));
}

TEST_F(Clock, AStopWithoutAStartReturnsZero)
{
    create_instance();
    EXPECT_EQ(stop_clock(), 0);
    EXPECT_EQ(stop_clock(), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Clock, NoTickComesAfterTheStop)
{
    create_instance();
    for (bool const audio : {true, false}) {
        activate(audio, false);
        for (int round = 0; round < 20; ++round) {
            std::atomic<bool> stopped{false};
            std::atomic<int> late{0};
            host.on_clock = [&](void*, PrTime) {
                if (stopped)
                    ++late;
            };
            start_clock();
            if (round % 2) {
                ASSERT_TRUE(log.wait_for("clock"));
            }
            stop_clock();
            stopped = true;
            auto const ticks = log.count("clock");
            std::this_thread::yield();
            EXPECT_EQ(log.count("clock"), ticks);
            EXPECT_EQ(late, 0);
            log.clear();
        }
    }
}

TEST_F(Clock, RunsWithoutAudioWhenAudioIsNotActive)
{
    create_instance();
    activate(false, true);
    start_clock();
    ASSERT_TRUE(log.wait_for("clock(first", 2));
    stop_clock();
    EXPECT_THAT(log.lines({"audio", "Quillolib_send_send_audio"}), IsEmpty());
}

TEST_F(Clock, RunsWithoutAudioWhenTheHostHasNoAudioSuite)
{
    host.has_audio_suite = false;
    create_instance();
    activate(true, true);
    start_clock();
    ASSERT_TRUE(log.wait_for("clock(first", 2));
    stop_clock();
    EXPECT_THAT(log.lines({"audio", "Quillolib_send_send_audio"}), IsEmpty());
}

TEST_F(Clock, AudioThatIsSwitchedWhileTheThreadRunsCountsFromTheNextStart)
{
    create_instance();
    activate(true, false);
    sender.hold_audio_after(0);
    start_clock();
    ASSERT_TRUE(log.wait_for("Quillolib_send_send_audio"));
    activate(false, false);
    start_clock();
    sender.let_audio_run();
    ASSERT_TRUE(log.wait_for("Quillolib_send_send_audio", 3));
    stop_clock();

    log.clear();
    start_clock();
    ASSERT_TRUE(log.wait_for("clock"));
    stop_clock();
    EXPECT_EQ(log.count("audio"), 0u);
}

TEST_F(Clock, InstancesHaveAThreadEach)
{
    create_instance();
    activate(true, false);
    tmInstance other = a_sequence();
    other.inPlayID = 7;
    ASSERT_EQ(functions.CreateInstance(&parms, &other), 0);
    functions.ActivateDeactivate(&parms, &other, PrActivationEvent_PlayerActivated, 1, 0);
    tmPlaybackClock other_clock = a_clock();
    other_clock.inCallbackContext = second_context;

    sender.hold_audio_after(2);
    start_clock();
    functions.StartPlaybackClock(&parms, &other, &other_clock);
    ASSERT_TRUE(log.wait_for("audio 11th(42"));
    ASSERT_TRUE(log.wait_for("audio 11th(7"));
    sender.let_audio_run();
    ASSERT_TRUE(log.wait_for("clock(first"));
    ASSERT_TRUE(log.wait_for("clock(second"));
    stop_clock();
    auto const first_ticks = log.count("clock(first");
    ASSERT_TRUE(log.wait_for("clock(second", log.count("clock(second") + 2));
    EXPECT_EQ(log.count("clock(first"), first_ticks);
    functions.StopPlaybackClock(&parms, &other);
    functions.ActivateDeactivate(&parms, &other, PrActivationEvent_PlayerActivated, 0, 0);
    functions.DisposeInstance(&parms, &other);
}

} // namespace

} // namespace quillo::test
