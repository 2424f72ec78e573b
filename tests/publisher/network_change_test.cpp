// When sound and pictures may have to be set right at a receiver.
#include "publisher/network_change.h"

#include <gtest/gtest.h>

namespace quillo::publisher {
namespace {

using namespace std::chrono_literals;
using lately = network_change::lately;

// Second by second: pictures lost, and the time to the receiver and back.
struct watched
{
    lately second(std::uint64_t lost, std::optional<std::chrono::microseconds> round_trip)
    {
        now += 1s;
        dropped += lost;
        return network.look(now, dropped, round_trip);
    }

    network_change network;
    std::chrono::steady_clock::time_point now = std::chrono::steady_clock::time_point{} + 1h;
    std::uint64_t dropped = 0;
};

TEST(network_change, quiet_network_is_left_alone)
{
    watched same;
    for (int k = 0; k < 100; ++k)
        EXPECT_EQ(same.second(0, k % 2 == 0 ? 3ms : 12ms), lately::settled) << k;
}

TEST(network_change, longer_way_counts_until_it_has_settled)
{
    watched longer;
    EXPECT_EQ(longer.second(0, 1ms), lately::settled);
    for (int k = 0; k < 15; ++k)
        EXPECT_EQ(longer.second(0, 51ms), lately::changed) << k;
    EXPECT_EQ(longer.second(0, 51ms), lately::settled);
    EXPECT_EQ(longer.second(0, 1ms), lately::changed); // and so does the way back
}

TEST(network_change, lag_that_is_gone_counts_as_such_until_receivers_follow)
{
    watched laggy;
    EXPECT_EQ(laggy.second(0, 1ms), lately::settled);
    EXPECT_EQ(laggy.second(0, 300ms), lately::changed);
    EXPECT_EQ(laggy.second(0, 1500ms), lately::changed);
    for (int k = 0; k < 5; ++k)
        EXPECT_EQ(laggy.second(0, 1ms), lately::caught_up) << k;
    for (int k = 0; k < 10; ++k)
        EXPECT_EQ(laggy.second(0, 1ms), lately::changed) << k;
    EXPECT_EQ(laggy.second(0, 1ms), lately::settled);
}

TEST(network_change, loss_counts_from_the_last_one)
{
    watched lossy;
    for (int k = 0; k < 30; ++k)
        EXPECT_EQ(lossy.second(1, std::nullopt), lately::changed) << k;
    for (int k = 0; k < 14; ++k)
        EXPECT_EQ(lossy.second(0, std::nullopt), lately::changed) << k;
    EXPECT_EQ(lossy.second(0, std::nullopt), lately::settled);
}

TEST(network_change, stall_counts_until_it_has_settled)
{
    watched stalled;
    EXPECT_EQ(stalled.second(0, 1ms), lately::settled);
    stalled.network.stood_still(stalled.now);
    for (int k = 0; k < 14; ++k)
        EXPECT_EQ(stalled.second(0, 1ms), lately::changed) << k;
    EXPECT_EQ(stalled.second(0, 1ms), lately::settled);
}

} // namespace
} // namespace quillo::publisher
