// The two clocks, with times made up here.
#include "sender/open/pacing.h"

#include <gtest/gtest.h>

namespace quillo::open {

using namespace std::chrono_literals;

namespace {

steady::time_point const start{1000h};

} // namespace

TEST(timeline, KeepsExactTimeForDays)
{
    timeline line;
    line.start(start, 22050);
    constexpr std::int64_t blocks = 2 * 24 * 3600 * 100; // two days and more
    for (std::int64_t block = 0; block < blocks; ++block)
        line.advance(220);
    constexpr std::int64_t samples = blocks * 220;
    EXPECT_EQ(line.at() - start, std::chrono::seconds{samples / 22050} +
                                     std::chrono::nanoseconds{samples % 22050 * 1'000'000'000 / 22050});
}

TEST(audio_clock, GivesEveryBlockItsPlace)
{
    audio_clock clock;
    for (int block = 0; block < 1000; ++block) {
        // The host comes up to 9 ms late, and catches up again.
        auto const now = start + block * 10ms + block % 10 * 1ms;
        auto const due = clock.next(now, 48000, 480);
        EXPECT_EQ(due.begin - start, block * 10ms);
        EXPECT_EQ(due.end - start, (block + 1) * 10ms);
        EXPECT_FALSE(due.late);
    }
}

TEST(audio_clock, DoesNotRoundBlocksThatAreNoWholeNumberOfNanoseconds)
{
    audio_clock clock;
    auto now = start;
    for (int block = 0; block < 22050; ++block)
        now = clock.next(now, 22050, 220).end;
    // 22050 blocks of 220 samples are 220 seconds to the nanosecond.
    EXPECT_EQ(now - start, 220s);
}

TEST(audio_clock, CatchesUpWithSmallDelays)
{
    audio_clock clock;
    clock.next(start, 48000, 480);
    auto const due = clock.next(start + 110ms, 48000, 480);
    EXPECT_FALSE(due.late);
    EXPECT_EQ(due.begin, start + 10ms);
}

TEST(audio_clock, StartsAnewWhenMoreThanATenthOfASecondLate)
{
    audio_clock clock;
    clock.next(start, 48000, 480);
    auto const now = start + 110ms + 1us;
    auto const due = clock.next(now, 48000, 480);
    EXPECT_TRUE(due.late);
    EXPECT_EQ(due.begin, now);
    EXPECT_EQ(due.end, now + 10ms);
    // No burst afterwards: the next block follows in its turn.
    EXPECT_EQ(clock.next(now + 10ms, 48000, 480).begin, now + 10ms);
}

TEST(audio_clock, StartsAnewWithAnotherRateAndDoesNotCallThatLate)
{
    audio_clock clock;
    clock.next(start, 48000, 480);
    auto const due = clock.next(start + 7ms, 44100, 441);
    EXPECT_EQ(due.begin, start + 7ms);
    EXPECT_EQ(due.end, start + 17ms);
    EXPECT_FALSE(due.late);
}

TEST(audio_clock, TakesBlocksOfAnyLength)
{
    audio_clock clock;
    EXPECT_EQ(clock.next(start, 48000, 1).end, start + 20833ns);
    EXPECT_EQ(clock.next(start, 48000, 47999).end, start + 1s);
    EXPECT_EQ(clock.next(start + 1s, 1, 10).end, start + 11s);
}

TEST(video_clock, LetsTheNextCallWaitForTheFrameBefore)
{
    video_clock clock;
    EXPECT_FALSE(clock.frame(start, 50, 1));
    EXPECT_LE(clock.wait_until(start), start) << "the first frame is due when it comes";
    // The second frame comes at once: the call after it waits until it is due.
    EXPECT_FALSE(clock.frame(start + 1ms, 50, 1));
    EXPECT_EQ(clock.wait_until(start + 2ms), start + 20ms);
    EXPECT_FALSE(clock.frame(start + 20ms, 50, 1));
    EXPECT_EQ(clock.wait_until(start + 21ms), start + 40ms);
}

TEST(video_clock, NeverWaitsForAHostThatKeepsTimeWithLessThanAFrameOfJitter)
{
    video_clock clock;
    auto const period = 1001.0 / 60000.0;
    for (int frame = 0; frame < 60000; ++frame) {
        // Frames handed over in steps of 10 ms, as a host clock that moves by blocks of sound does.
        auto const steps = static_cast<std::int64_t>(frame * period / 0.010) + 1;
        auto const now = start + steps * 10ms;
        EXPECT_LE(clock.wait_until(now), now) << frame;
        EXPECT_FALSE(clock.frame(now, 60000, 1001)) << frame;
    }
}

TEST(video_clock, DoesNotHoldUpAHostForEverWhoseFirstFrameWasLate)
{
    // The first frame comes 1.8 frames late, the others in time.
    video_clock clock;
    clock.frame(start + 36ms, 50, 1);
    steady::duration waited{};
    for (int frame = 1; frame < 1000; ++frame) {
        auto const call = std::max(start + frame * 20ms, start + 37ms);
        auto const now = std::max(call, clock.wait_until(call));
        waited += now - call;
        EXPECT_FALSE(clock.frame(now + 1ms, 50, 1));
    }
    EXPECT_LE(waited, 20ms);
}

TEST(video_clock, IsNotTakenForALongRideByAHostThatWorksBetweenItsCalls)
{
    // It would be ready for a frame every 10 ms, and is held to its rate but for the first frames and one in 256.
    video_clock clock;
    auto now = start;
    clock.frame(now, 50, 1);
    for (int frame = 1; frame <= 1000; ++frame) {
        now = std::max(now + 10ms, clock.wait_until(now + 10ms));
        clock.frame(now, 50, 1);
    }
    EXPECT_GE(now - start, 993 * 20ms);
}

TEST(video_clock, LetsGoOfASteadyHostThatWasHeldUp)
{
    // Behind a stop of five frames the host sends all that it missed, and then keeps its old time.
    video_clock clock;
    auto const host_time = [](int frame) { return start + frame * 20ms; };
    auto now = start;
    steady::duration waited{};
    for (int frame = 0; frame < 2000; ++frame) {
        auto const call = std::max({host_time(frame), now + 3ms, frame >= 50 ? host_time(55) : start});
        now = std::max(call, clock.wait_until(call));
        waited = now - call;
        clock.frame(now, 50, 1);
    }
    EXPECT_EQ(now, host_time(1999));
    EXPECT_EQ(waited, steady::duration{});
}

TEST(video_clock, KeepsExactTime)
{
    video_clock clock;
    auto now = start;
    clock.frame(now, 60000, 1001);
    for (int frame = 1; frame <= 60000; ++frame) {
        now = clock.wait_until(now);
        clock.frame(now, 60000, 1001);
    }
    // The last frame of 60000 is due 1001 s behind the first.
    EXPECT_EQ(clock.wait_until(now + 1ms) - start, 1001s);
}

TEST(video_clock, StartsAnewWhenMoreThanTwoFramesLate)
{
    video_clock clock;
    clock.frame(start, 50, 1);
    EXPECT_FALSE(clock.frame(start + 60ms, 50, 1));      // due at 20 ms
    EXPECT_TRUE(clock.frame(start + 80ms + 1us, 50, 1)); // due at 40 ms
    EXPECT_FALSE(clock.frame(start + 81ms, 50, 1));
    EXPECT_EQ(clock.wait_until(start + 82ms), start + 100ms + 1us);
}

TEST(video_clock, StartsAnewWithAnotherRateAndDoesNotCallThatLate)
{
    video_clock clock;
    clock.frame(start, 25, 1);
    EXPECT_FALSE(clock.frame(start + 5s, 30000, 1001));
    EXPECT_FALSE(clock.frame(start + 5s, 30000, 1001));
    EXPECT_EQ(clock.wait_until(start + 5s), start + 5s + 33366666ns);
}

TEST(video_clock, WaitsForOneFrameAtMost)
{
    video_clock clock;
    auto const now = start;
    for (int frame = 0; frame < 10; ++frame)
        clock.frame(now, 50, 1);
    EXPECT_EQ(clock.wait_until(now), now + 20ms);
}

TEST(video_clock, SurvivesRatesFarOffTheBeaten)
{
    video_clock slow;
    for (int frame = 0; frame < 100; ++frame) {
        EXPECT_FALSE(slow.frame(start + frame * 1s, 1, 2147483647));
        EXPECT_LE(slow.wait_until(start + frame * 1s), start + (frame + 1) * 1s);
    }
    video_clock fast;
    auto now = start;
    for (int frame = 0; frame < 100; ++frame) {
        fast.frame(now, 2147483647, 1);
        EXPECT_LE(fast.wait_until(now), now + 1ns);
    }
}

} // namespace quillo::open
