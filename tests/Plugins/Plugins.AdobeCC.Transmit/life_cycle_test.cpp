// Random orders of everything that a host may do, with the clock thread running beside it. Logs are off, so that no
// lock of the test's own orders the threads. QUILLO_SEED=n repeats one order.
#include <array>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>

#include "tests/support/transmit_fixture.h"

#if defined(QUILLO_FAKE_STEADY_TIME)
#include "tests/support/fake_steady_time.h"
#endif

namespace quillo::test {

namespace {

// What the playback clock's context points to.
struct ticks
{
    std::atomic<bool> allowed{false};
    std::atomic<int> unexpected{0};
};

void count_tick(void* context, PrTime step)
{
    auto& seen = *static_cast<ticks*>(context);
    if (!seen.allowed.load(std::memory_order_relaxed) || step < 0)
        seen.unexpected.fetch_add(1, std::memory_order_relaxed);
}

class LifeCycle : public TransmitTest
{
  protected:
    struct opened
    {
        tmInstance record;
        bool is_open = false;
        std::array<ticks, 2> contexts; // one for each other start
        int starts = 0;
    };

    LifeCycle()
    {
        log.set_quiet(true);
        sender.on_audio = [] { std::this_thread::yield(); };
        host.on_pull = [](float** channels, csSDK_uint32 samples, PrTime& time) -> prSuiteError {
            channels[0][0] = 1.0f;
            channels[1][samples - 1] = 2.0f;
            time = 2540160000;
            return suiteError_NoError;
        };
#if defined(QUILLO_FAKE_STEADY_TIME)
        fake_steady_time::sleep_ns = [](long long) { std::this_thread::yield(); };
#endif
        PrPixelFormat const formats[] = {PrPixelFormat_BGRA_4444_8u, PrPixelFormat_VUYA_4444_8u_709,
                                         PrPixelFormat_Invalid};
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            int const width = 5 + 9 * static_cast<int>(i % 4);
            int const height = 2 + 7 * static_cast<int>(i % 3);
            pictures[i] = std::make_unique<fake_picture>(formats[i % 3], width, height);
            pictures[i]->paint(static_cast<unsigned char>(255 - i % 2));
        }
    }

    ~LifeCycle() override
    {
        log.set_quiet(false);
#if defined(QUILLO_FAKE_STEADY_TIME)
        fake_steady_time::sleep_ns = nullptr;
#endif
    }

    unsigned roll(unsigned sides) { return static_cast<unsigned>(random() % sides); }

    void one_order()
    {
        host.has_audio_suite = roll(4) != 0;
        host.set_up_result = roll(8) == 0 ? static_cast<prSuiteError>(suiteError_PlayModuleAudioInitFailure) : 0;
        sender.refuses = roll(16) == 0;
        ASSERT_EQ(functions.Startup(&parms, &info), 0);
        unsigned const steps = 4 + roll(16);
        for (unsigned i = 0; i < steps; ++i)
            one_step(instances[roll(static_cast<unsigned>(instances.size()))]);
        for (opened& open : instances)
            dispose(open);
        for (unsigned i = 0; i <= roll(3); ++i)
            ASSERT_EQ(functions.Shutdown(&parms), 0);
    }

    void one_step(opened& open)
    {
        if (!open.is_open)
            return create(open);
        switch (roll(10)) {
        case 0:
        case 1:
            return start(open);
        case 2:
            return stop(open);
        case 3:
            return activate(open);
        case 4:
        case 5:
            return push_some(open, 1 + roll(4));
        case 6:
            return push_beside_the_clock(open);
        case 7:
            return ask(open);
        case 8:
            return roll(2) ? dispose(open) : start(open);
        default:
            return start_many_times(open);
        }
    }

    void create(opened& open)
    {
        open.record = a_sequence();
        open.record.inNumChannels = roll(9);
        open.record.inAudioSampleRate = roll(2) ? 48000.0f : 22050.4f;
        open.record.inVideoFieldType = static_cast<prFieldType>(roll(5));
        ASSERT_EQ(functions.CreateInstance(&parms, &open.record), 0);
        open.is_open = true;
    }

    void start(opened& open)
    {
        ticks& context = open.contexts[static_cast<std::size_t>(open.starts++ % 2)];
        context.allowed.store(true, std::memory_order_relaxed);
        tmPlaybackClock start = a_clock();
        start.inClockCallback = &count_tick;
        start.inCallbackContext = &context;
        start.inPlayMode = static_cast<pmPlayMode>(roll(3));
        ASSERT_EQ(functions.StartPlaybackClock(&parms, &open.record, &start), 0);
    }

    void start_many_times(opened& open)
    {
        for (unsigned i = 0; i < 20; ++i)
            start(open);
    }

    void stop(opened& open)
    {
        ASSERT_EQ(functions.StopPlaybackClock(&parms, &open.record), 0);
        for (ticks& context : open.contexts)
            context.allowed.store(false, std::memory_order_relaxed);
    }

    void activate(opened& open)
    {
        ASSERT_EQ(functions.ActivateDeactivate(&parms, &open.record, PrActivationEvent_Unspecified,
                                               static_cast<prBool>(roll(2)), static_cast<prBool>(roll(2))),
                  0);
    }

    void push_some(opened& open, unsigned count)
    {
        std::array<tmLabeledFrame, 4> frames;
        for (unsigned i = 0; i < count; ++i) {
            auto const chosen = roll(static_cast<unsigned>(pictures.size()));
            frames[i] = {pictures[chosen]->hand(), nullptr};
            ++pushed[chosen];
        }
        tmPushVideo push{};
        push.inTime = static_cast<PrTime>(random() % 1000000000000) - 100000000;
        push.inFrames = frames.data();
        push.inFrameCount = count;
        ASSERT_EQ(functions.PushVideo(&parms, &open.record, &push), 0);
    }

    void push_beside_the_clock(opened& open)
    {
        // The dice stay on the pushing thread; starts and stops take turns.
        std::thread pusher([&] {
            for (int i = 0; i < 8; ++i)
                push_some(open, 1 + roll(4));
        });
        for (int i = 0; i < 4; ++i) {
            tmPlaybackClock start = a_clock();
            start.inClockCallback = &count_tick;
            start.inCallbackContext = &beside;
            beside.allowed.store(true, std::memory_order_relaxed);
            EXPECT_EQ(functions.StartPlaybackClock(&parms, &open.record, &start), 0);
            EXPECT_EQ(functions.StartPlaybackClock(&parms, &open.record, &start), 0);
            stop(open);
            beside.allowed.store(false, std::memory_order_relaxed);
        }
        pusher.join();
    }

    void ask(opened& open)
    {
        tmAudioMode audio{};
        EXPECT_EQ(functions.QueryAudioMode(&parms, &open.record, static_cast<int>(roll(6)) - 1, &audio), 0);
        tmVideoMode video{};
        int const index = static_cast<int>(roll(6)) - 1;
        EXPECT_EQ(functions.QueryVideoMode(&parms, &open.record, index, &video), index >= 0 && index < 3 ? 1 : 0);
        prBool reset = 0;
        EXPECT_EQ(functions.NeedsReset(&parms, &reset), 0);
    }

    // As every host does: the clock stopped and video off before the end.
    void dispose(opened& open)
    {
        if (!open.is_open)
            return;
        stop(open);
        functions.ActivateDeactivate(&parms, &open.record, PrActivationEvent_Unspecified, 0, 0);
        ASSERT_EQ(functions.DisposeInstance(&parms, &open.record), 0);
        open.is_open = false;
    }

    std::mt19937_64 random;
    std::array<opened, 3> instances;
    std::array<std::unique_ptr<fake_picture>, 12> pictures;
    std::array<int, 12> pushed{};
    ticks beside;
};

TEST_F(LifeCycle, AnyOrderOfCallsIsSurvived)
{
    char const* const given = std::getenv("QUILLO_SEED");
    unsigned long const first = given ? std::strtoul(given, nullptr, 10) : 1;
    unsigned long const last = given ? first : QUILLO_LIFE_CYCLES;
    for (unsigned long seed = first; seed <= last && !HasFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "QUILLO_SEED=" << seed);
        random.seed(seed);
        one_order();
        EXPECT_EQ(sender.disturbed_frames(), 0);
        EXPECT_EQ(sender.living(), 0);
        EXPECT_EQ(beside.unexpected, 0) << "a tick after the stop, or backwards";
        for (opened const& open : instances)
            for (ticks const& context : open.contexts)
                EXPECT_EQ(context.unexpected, 0) << "a tick after the stop, or backwards";
        for (std::size_t i = 0; i < pictures.size(); ++i)
            EXPECT_EQ(pictures[i]->disposed, pushed[i]) << "picture " << i;
    }
}

} // namespace

} // namespace quillo::test
