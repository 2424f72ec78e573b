// When sound and pictures may have to be set right at a receiver.
#include "publisher/network_change.h"

#include <gtest/gtest.h>

namespace quillo::publisher {
namespace {

using namespace std::chrono_literals;

// Second by second: pictures lost, and the time to the receiver and back.
struct watched
{
    bool second(std::uint64_t lost, std::optional<std::chrono::microseconds> round_trip)
    {
        now += 1s;
        dropped += lost;
        return network.recent(now, dropped, round_trip);
    }

    network_change network;
    std::chrono::steady_clock::time_point now = std::chrono::steady_clock::time_point{} + 1h;
    std::uint64_t dropped = 0;
};

TEST(network_change, quiet_network_is_left_alone)
{
    watched same;
    for (int k = 0; k < 100; ++k)
        EXPECT_FALSE(same.second(0, k % 2 == 0 ? 3ms : 12ms)) << k;
}

TEST(network_change, longer_way_counts_until_it_has_settled)
{
    watched longer;
    EXPECT_FALSE(longer.second(0, 1ms));
    for (int k = 0; k < 15; ++k)
        EXPECT_TRUE(longer.second(0, 51ms)) << k;
    EXPECT_FALSE(longer.second(0, 51ms));
    EXPECT_TRUE(longer.second(0, 1ms)); // and so does the way back
}

TEST(network_change, loss_counts_from_the_last_one)
{
    watched lossy;
    for (int k = 0; k < 30; ++k)
        EXPECT_TRUE(lossy.second(1, std::nullopt)) << k;
    for (int k = 0; k < 14; ++k)
        EXPECT_TRUE(lossy.second(0, std::nullopt)) << k;
    EXPECT_FALSE(lossy.second(0, std::nullopt));
}

TEST(network_change, stall_counts_until_it_has_settled)
{
    watched stalled;
    EXPECT_FALSE(stalled.second(0, 1ms));
    stalled.network.stood_still(stalled.now);
    for (int k = 0; k < 14; ++k)
        EXPECT_TRUE(stalled.second(0, 1ms)) << k;
    EXPECT_FALSE(stalled.second(0, 1ms));
}

} // namespace
} // namespace quillo::publisher
