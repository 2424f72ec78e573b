// The clock without audio, on a clock of the test's own.
#include <deque>
#include <semaphore>

#include "tests/support/fake_steady_time.h"
#include "tests/support/transmit_fixture.h"

namespace quillo::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ClockOnly : public TransmitTest
{
  protected:
    ClockOnly()
    {
        create_instance();
        fake_steady_time::now_ns = [this] {
            log.add("now");
            long long const now = times.empty() ? 0 : times.front();
            if (!times.empty())
                times.pop_front();
            return now;
        };
        fake_steady_time::sleep_ns = [this](long long duration) {
            log.add("sleep ", duration);
            may_wake.acquire();
        };
    }
    ~ClockOnly() override
    {
        may_wake.release(1000);
        stop_clock();
        fake_steady_time::now_ns = nullptr;
        fake_steady_time::sleep_ns = nullptr;
    }

    // Ticks at the given distances, then a stop inside the sleep after the last of them.
    std::vector<std::string> tick(std::deque<long long> elapsed)
    {
        log.clear();
        long long now = 5000000000;
        times = {now};
        for (long long const distance : elapsed)
            times.push_back(now += distance);
        start_clock();
        for (std::size_t i = 0; i + 1 < elapsed.size(); ++i) {
            may_wake.release();
            EXPECT_TRUE(log.wait_for("sleep", i + 2));
        }
        EXPECT_TRUE(log.wait_for("sleep", elapsed.size()));
        run_blocked([&] { stop_clock(); }, [&] { may_wake.release(); });
        return log.lines();
    }

    std::deque<long long> times; // clock thread's while it runs
    std::counting_semaphore<> may_wake{0};
};

TEST_F(ClockOnly, SleepsSixteenMillisecondsAndTicksWhatHasPassed)
{
    EXPECT_THAT(tick({16000000, 16000000}), ElementsAre("now", "sleep 16000000", "now", "clock(first, 4064256000)",
                                                        "sleep 16000000", "now", "clock(first, 4064256000)"));
}

TEST_F(ClockOnly, TicksAreComputedInSinglePrecision)
{
    tick({17500001, 33366667, 1000000000, 1, 0});
    EXPECT_THAT(log.lines({"clock"}),
                ElementsAre("clock(first, 4445279744)", "clock(first, 8475667456)", "clock(first, 254015995904)",
                            "clock(first, 254)", "clock(first, 0)"));
}

TEST_F(ClockOnly, AStopDuringTheSleepStillTicksOnce)
{
    EXPECT_THAT(tick({20000000}), ElementsAre("now", "sleep 16000000", "now", "clock(first, 5080320000)"));
}

TEST_F(ClockOnly, AStopBeforeTheFirstSleepEndsWithoutATick)
{
    std::binary_semaphore may_begin{0};
    fake_steady_time::now_ns = [&] {
        may_begin.acquire();
        return 0ll;
    };
    start_clock();
    run_blocked([&] { EXPECT_EQ(stop_clock(), 0); }, [&] { may_begin.release(); });
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ClockOnly, ASecondStartChangesTheNextTick)
{
    char again[] = "again";
    times = {0, 16000000, 32000000};
    start_clock();
    ASSERT_TRUE(log.wait_for("sleep"));
    may_wake.release();
    ASSERT_TRUE(log.wait_for("sleep", 2));
    clock.inCallbackContext = again;
    start_clock();
    run_blocked([&] { stop_clock(); }, [&] { may_wake.release(); });
    EXPECT_THAT(log.lines({"clock"}), ElementsAre("clock(first, 4064256000)", "clock(again, 4064256000)"));
}

} // namespace

} // namespace quillo::test
