#include "publisher/time_base.h"

#include <gtest/gtest.h>

namespace quillo::publisher {
namespace {

using ns = time_base::ns;

constexpr ns ms = 1'000'000;
constexpr ns start = 1000 * 1000 * ms;
constexpr std::int64_t ms_100ns = 10'000;

TEST(time_base, pictures_keep_the_distance_of_their_timecodes)
{
    time_base time;
    EXPECT_EQ(time.picture(5'000'000, start), start);
    // Late by 30 ms, then early by 20: the timecode counts.
    EXPECT_EQ(time.picture(5'000'000 + 40 * ms_100ns, start + 70 * ms), start + 40 * ms);
    EXPECT_EQ(time.picture(5'000'000 + 80 * ms_100ns, start + 60 * ms), start + 80 * ms);
    EXPECT_EQ(time.anchors(), 1u);
}

TEST(time_base, sound_and_picture_share_one_anchor)
{
    time_base time;
    time.picture(0, start);
    auto const block = time.sound(10 * ms_100ns, start + 50 * ms, 480, 48000);
    EXPECT_EQ(block.start, start + 10 * ms);
    EXPECT_EQ(time.anchors(), 1u);
}

TEST(time_base, difference_just_within_tolerance_is_kept)
{
    time_base time;
    time.picture(0, start);
    EXPECT_EQ(time.picture(200 * ms_100ns, start + 200 * ms + time_base::tolerance - 1), start + 200 * ms);
    EXPECT_EQ(time.anchors(), 1u);
}

TEST(time_base, difference_of_the_tolerance_makes_a_new_anchor_for_both)
{
    time_base time;
    time.picture(0, start);
    ns const late = start + 200 * ms + time_base::tolerance;
    EXPECT_EQ(time.picture(200 * ms_100ns, late), late);
    EXPECT_EQ(time.anchors(), 2u);
    auto const block = time.sound(210 * ms_100ns, late + 10 * ms, 480, 48000);
    EXPECT_EQ(block.start, late + 10 * ms);
    EXPECT_EQ(time.anchors(), 2u);
}

TEST(time_base, seek_backwards_is_placed_at_its_arrival)
{
    time_base time;
    time.picture(60'000 * ms_100ns, start);
    EXPECT_EQ(time.picture(0, start + 40 * ms), start + 40 * ms);
    EXPECT_EQ(time.picture(40 * ms_100ns, start + 83 * ms), start + 80 * ms);
}

TEST(time_base, pictures_always_rise)
{
    time_base time;
    ns const first = time.picture(1000 * ms_100ns, start);
    ns const again = time.picture(1000 * ms_100ns, start);
    EXPECT_EQ(again, first + time_base::smallest_step);
    // The host sends an earlier picture, near enough to be no jump.
    EXPECT_EQ(time.picture(900 * ms_100ns, start + ms), again + time_base::smallest_step);
}

TEST(time_base, repeated_picture_stands_at_now_and_later_ones_behind_it)
{
    time_base time;
    time.picture(0, start);
    EXPECT_EQ(time.repeated_picture(start + 200 * ms), start + 200 * ms);
    EXPECT_EQ(time.picture(100 * ms_100ns, start + 210 * ms), start + 200 * ms + time_base::smallest_step);
}

TEST(time_base, thirty_thousand_frames_at_2997_never_leave_the_rational_value)
{
    time_base time;
    for (std::int64_t frame = 0; frame < 30'000; ++frame) {
        std::int64_t const timecode = (frame * 10'000'000 * 1001 + 15'000) / 30'000;
        ns const exact = start + frame * 1001 * 1'000'000'000 / 30'000;
        ns const arrival = exact + (frame % 7) * ms;
        ASSERT_NEAR(static_cast<double>(time.picture(timecode, arrival) - exact), 0.0, 50.0) << frame;
    }
    EXPECT_EQ(time.anchors(), 1u);
}

TEST(time_base, blocks_of_220_samples_at_22050_join_without_drift_for_a_week)
{
    time_base time;
    std::int64_t sample = 0;
    std::int64_t const week = std::int64_t{22050} * 86400 * 7;
    // Every thousandth block arrives; the ones between are as long, in one piece.
    auto const exact = [&](std::int64_t s) { return s / 22050 * 1'000'000'000 + s % 22050 * 1'000'000'000 / 22050; };
    int blocks = 0;
    while (sample < week) {
        int const samples = blocks % 2 ? 220 * 999 : 220;
        ns const at = start + exact(sample);
        auto const block = time.sound((exact(sample) + 50) / 100, at, samples, 22050);
        ASSERT_FALSE(block.late);
        ASSERT_EQ(block.start, at) << blocks;
        ASSERT_EQ(block.follows, blocks > 0);
        sample += samples;
        ++blocks;
    }
}

TEST(time_base, small_gap_is_closed_and_larger_one_is_kept)
{
    time_base time;
    time.sound(0, start, 480, 48000);
    auto const near = time.sound(14 * ms_100ns, start + 14 * ms, 480, 48000);
    EXPECT_EQ(near.start, start + 10 * ms);
    EXPECT_TRUE(near.follows);
    auto const far = time.sound(40 * ms_100ns, start + 40 * ms, 480, 48000);
    EXPECT_EQ(far.start, start + 40 * ms);
    EXPECT_FALSE(far.follows);
}

TEST(time_base, sound_for_a_time_that_is_filled_is_late)
{
    time_base time;
    time.sound(0, start, 480, 48000);
    for (int k = 0; k < 10; ++k)
        time.untimed_sound(start + (10 + 10 * k) * ms, 480, 48000);
    EXPECT_EQ(time.sound_end(), start + 110 * ms);
    EXPECT_TRUE(time.sound(10 * ms_100ns, start + 60 * ms, 480, 48000).late);
    auto const block = time.sound(110 * ms_100ns, start + 112 * ms, 480, 48000);
    EXPECT_FALSE(block.late);
    EXPECT_EQ(block.start, start + 110 * ms);
}

TEST(time_base, silence_without_timecode_continues_what_came_before)
{
    time_base time;
    time.sound(0, start, 480, 48000);
    auto const silent = time.untimed_sound(start + 25 * ms, 480, 48000);
    EXPECT_EQ(silent.start, start + 10 * ms);
    EXPECT_TRUE(silent.follows);
    auto const after_rest = time.untimed_sound(start + 900 * ms, 480, 48000);
    EXPECT_EQ(after_rest.start, start + 900 * ms);
    EXPECT_FALSE(after_rest.follows);
}

TEST(time_base, change_of_rate_begins_a_new_run_at_the_end_of_the_old_one)
{
    time_base time;
    time.sound(0, start, 480, 48000);
    auto const block = time.sound(10 * ms_100ns, start + 10 * ms, 441, 44100);
    EXPECT_EQ(block.start, start + 10 * ms);
    EXPECT_EQ(time.sound_end(), start + 20 * ms);
}

TEST(time_base, streams_that_disagree_are_placed_by_arrival)
{
    time_base time;
    // Sound counts from an hour, pictures from zero; both arrive in real time.
    for (int k = 0; k < 100; ++k) {
        ns const now = start + k * 10 * ms;
        auto const block = time.sound(36'000'000'000 + k * 10 * ms_100ns, now, 480, 48000);
        ASSERT_FALSE(block.late);
        ASSERT_NEAR(static_cast<double>(block.start), static_cast<double>(now), 5.0 * ms);
        ASSERT_EQ(time.picture(k * 10 * ms_100ns, now + ms), now + ms);
    }
    EXPECT_LT(time.anchors(), 20u);
}

// Pictures of 20 ms and blocks of 10 ms, sound 40 ms behind the pictures as far as arrival goes. Pictures come with the
// load of the machine, up to 7 ms late; blocks when they are due.
class playing : public testing::Test
{
  protected:
    static constexpr ns sound_behind = 40 * ms;

    // Both streams from a time of the host's timeline to another, as they come when the host is held up by behind.
    void play(ns from, ns to, ns behind)
    {
        for (ns t = from; t < to; t += 10 * ms) {
            if (t % (20 * ms) == 0)
                picture(t, behind + t / ms % 7 * ms);
            sound(t, behind);
        }
    }

    void picture(ns t, ns late) { last_picture_ = time_.picture(t / 100, start + t + late); }
    void sound(ns t, ns late) { last_block_ = time_.sound(t / 100, start + t + sound_behind + late, 480, 48000); }

    time_base time_;
    ns last_picture_ = 0;
    time_base::block last_block_{};
};

TEST_F(playing, host_that_was_held_up_has_both_streams_moved_by_just_that)
{
    play(0, 1000 * ms, 0);
    ASSERT_EQ(last_block_.start, start + 990 * ms);
    ASSERT_EQ(last_picture_, start + 980 * ms);
    // 112 ms are less than a jump. Once two blocks agree everything stands that much later.
    play(1000 * ms, 2000 * ms, 112 * ms);
    EXPECT_EQ(last_block_.start, start + 1990 * ms + 112 * ms);
    EXPECT_EQ(last_picture_, start + 1980 * ms + 112 * ms);
    EXPECT_EQ(time_.anchors(), 2u);
    // More than a jump, and a picture that was on its way comes first.
    picture(2000 * ms, 430 * ms);
    play(2000 * ms, 3000 * ms, 412 * ms);
    EXPECT_EQ(last_block_.start, start + 2990 * ms + 412 * ms);
    EXPECT_EQ(last_picture_, start + 2980 * ms + 412 * ms);
    EXPECT_EQ(time_.anchors(), 3u);
}

TEST_F(playing, block_that_is_late_alone_moves_nothing)
{
    play(0, 1000 * ms, 0);
    sound(1000 * ms, 60 * ms);
    EXPECT_EQ(last_block_.start, start + 1000 * ms);
    play(1010 * ms, 1200 * ms, 0);
    EXPECT_EQ(last_block_.start, start + 1190 * ms);
    EXPECT_TRUE(last_block_.follows);
    EXPECT_EQ(time_.anchors(), 1u);
}

TEST_F(playing, blocks_that_make_up_for_lost_time_move_nothing)
{
    play(0, 1000 * ms, 0);
    for (int k = 0; k < 9; ++k) {
        sound((1000 + 10 * k) * ms, (90 - 10 * k) * ms);
        EXPECT_EQ(last_block_.start, start + (1000 + 10 * k) * ms);
        EXPECT_TRUE(last_block_.follows);
    }
    EXPECT_EQ(time_.anchors(), 1u);
}

TEST_F(playing, picture_that_is_late_alone_stands_where_it_came_and_moves_nothing)
{
    play(0, 1000 * ms, 0);
    picture(1000 * ms, 300 * ms);
    EXPECT_NEAR(static_cast<double>(last_picture_), static_cast<double>(start + 1300 * ms), 7.0 * ms);
    sound(1300 * ms, 0);
    EXPECT_EQ(last_block_.start, start + 1300 * ms);
    picture(1320 * ms, 0);
    EXPECT_EQ(last_picture_, start + 1320 * ms);
    EXPECT_EQ(time_.anchors(), 1u);
}

TEST_F(playing, sound_goes_on_without_a_gap_when_the_timecodes_jump)
{
    play(0, 1000 * ms, 0);
    ns const end = time_.sound_end();
    // A loop: what is played at 1000 ms is what was played at 0.
    auto const block = time_.sound(0, start + 1000 * ms + sound_behind, 480, 48000);
    EXPECT_EQ(block.start, end);
    EXPECT_TRUE(block.follows);
    EXPECT_EQ(time_.picture(0, start + 1003 * ms), start + 1000 * ms);
}

TEST_F(playing, pictures_move_the_anchor_again_when_sound_rests)
{
    play(0, 1000 * ms, 0);
    ns const later = start + 1000 * ms + sound_behind + time_base::sound_runs;
    ns const anchor = time_.picture(500 * ms_100ns, later);
    EXPECT_NEAR(static_cast<double>(anchor), static_cast<double>(later), 7.0 * ms);
    EXPECT_EQ(time_.anchors(), 2u);
    EXPECT_EQ(time_.picture(540 * ms_100ns, later + 50 * ms), anchor + 40 * ms);
}

TEST(time_base, after_scrubbing_timecodes_count_again)
{
    time_base time;
    ns now = start;
    for (int k = 0; k < 20; ++k) {
        now += 20 * ms;
        EXPECT_EQ(time.picture((k * 7919 % 100) * 1000 * ms_100ns, now), now);
    }
    now += time_base::free_time + 100 * ms;
    ns const anchor = time.picture(0, now);
    EXPECT_EQ(time.picture(40 * ms_100ns, now + 55 * ms), anchor + 40 * ms);
}

TEST(time_base, extreme_timecodes_do_no_harm)
{
    time_base time;
    ns last = 0;
    ns now = start;
    for (std::int64_t const timecode :
         {INT64_MIN, INT64_MAX, std::int64_t{0}, INT64_MIN + 1, std::int64_t{-1}, INT64_MAX - 1}) {
        now += 40 * ms;
        ns const time_of = time.picture(timecode, now);
        EXPECT_GT(time_of, last);
        EXPECT_LE(time_of - now, time_base::tolerance);
        last = time_of;
        EXPECT_FALSE(time.sound(timecode, now, 480, 48000).late);
    }
}

} // namespace
} // namespace quillo::publisher
