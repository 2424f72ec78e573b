// What a machine that stood still leaves in an encoder.
#include "publisher/stale.h"

#include <gtest/gtest.h>

namespace quillo::publisher {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

class stale_items_test : public testing::Test
{
  protected:
    // An item each 20 ms.
    bool next(milliseconds late)
    {
        now_ += 20ms;
        return items_.is_stale(late, now_);
    }

    stale_items items_;
    milliseconds now_ = 1h;
};

TEST_F(stale_items_test, first_item_is_good_however_late) { EXPECT_FALSE(next(700ms)); }

TEST_F(stale_items_test, encoder_that_is_always_slow_is_good)
{
    for (int k = 0; k < 100; ++k)
        EXPECT_FALSE(next(300ms + milliseconds{k % 3 * 30})) << k;
}

// 50 ms more each second, as receivers follow it.
TEST_F(stale_items_test, encoder_that_becomes_slow_by_and_by_is_good)
{
    for (int k = 0; k < 500; ++k)
        EXPECT_FALSE(next(milliseconds{10 + k})) << k;
}

TEST_F(stale_items_test, lateness_that_grows_within_a_second_is_that_of_a_stall)
{
    for (int k = 0; k < 200; ++k)
        ASSERT_FALSE(next(10ms));
    for (auto late = 20ms; late <= 190ms; late += 10ms)
        EXPECT_FALSE(next(late));
    EXPECT_TRUE(next(200ms));
}

TEST_F(stale_items_test, what_a_long_stall_left_is_stale_up_to_what_is_nearly_on_time)
{
    for (int k = 0; k < 50; ++k)
        ASSERT_FALSE(next(10ms));
    EXPECT_TRUE(next(300ms));
    EXPECT_TRUE(next(200ms));
    EXPECT_TRUE(next(150ms));
    EXPECT_FALSE(next(110ms));
    EXPECT_FALSE(next(10ms));
}

TEST_F(stale_items_test, nothing_of_a_short_stall_is_stale)
{
    for (int k = 0; k < 50; ++k)
        ASSERT_FALSE(next(10ms));
    for (auto late = 190ms; late > 10ms; late -= 10ms)
        EXPECT_FALSE(next(late));
}

TEST_F(stale_items_test, machine_that_stays_slower_is_shown_again)
{
    for (int k = 0; k < 50; ++k)
        ASSERT_FALSE(next(10ms));
    int stale = 0;
    while (next(400ms))
        ++stale;
    EXPECT_EQ(stale, stale_items::longest / 20ms);
    for (int k = 0; k < 50; ++k)
        EXPECT_FALSE(next(400ms));
}

} // namespace
} // namespace quillo::publisher
