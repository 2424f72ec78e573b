// What is said about a receiver that cannot take all pictures.
#include "publisher/slow_receiver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo::publisher {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::Optional;

// Second by second: so many pictures taken and lost, bytes, and for how much of it the receiver's window was shut.
struct watched
{
    std::optional<std::string> second(std::uint64_t taken, std::uint64_t lost, std::uint64_t bytes = 0,
                                      std::chrono::microseconds shut = 0us)
    {
        now.at += 1s;
        now.pictures += taken;
        now.dropped += lost;
        now.acknowledged += bytes;
        now.busy += 1s;
        now.waits += shut;
        return who.look(now, compressed);
    }

    bool compressed = false;
    slow_receiver who;
    delivery now{std::chrono::steady_clock::time_point{} + 1h, 0, 0, 0, 0us, 0us};
};

TEST(slow_receiver, one_that_takes_everything_is_not_spoken_of)
{
    watched good;
    for (int k = 0; k < 100; ++k)
        EXPECT_FALSE(good.second(60, 0)) << k;
}

TEST(slow_receiver, single_losses_are_not_slowness)
{
    watched fair;
    for (int k = 0; k < 100; ++k)
        EXPECT_FALSE(fair.second(60, k % 5 == 0 ? 1 : 0)) << k;
}

TEST(slow_receiver, full_network_is_told_with_its_rate)
{
    watched slow;
    slow.second(27, 33, 117'500'000);
    for (int k = 0; k < 4; ++k)
        EXPECT_FALSE(slow.second(27, 33, 117'500'000));
    EXPECT_THAT(slow.second(27, 33, 117'500'000),
                Optional(::testing::AllOf(HasSubstr("lost 165 of 300 pictures in 5 s"), HasSubstr("carries 940 Mb/s"),
                                          HasSubstr("compressed mount, or a faster network"))));
}

TEST(slow_receiver, receiver_that_does_not_read_is_told_so)
{
    watched slow;
    slow.compressed = true;
    std::optional<std::string> said;
    for (int k = 0; k < 6 && !said; ++k)
        said = slow.second(10, 50, 1000, 900ms);
    EXPECT_THAT(said, Optional(HasSubstr("does not read quickly enough")));
}

TEST(slow_receiver, it_is_not_said_all_the_time)
{
    watched slow;
    int said = 0;
    for (int k = 0; k < 100; ++k)
        said += slow.second(30, 30).has_value();
    EXPECT_EQ(said, 4); // at 5, 35, 65 and 95 seconds
}

} // namespace
} // namespace quillo::publisher
