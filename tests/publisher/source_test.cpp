#include "publisher/source.h"
#include "tests/support/protocol_sender.h"

#include <gmock/gmock.h>
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using quillo::buffer_ptr;
using quillo::retain;
using namespace quillo::publisher;
using ns = source::ns;

constexpr ns ms = 1'000'000;
constexpr int rate = 48000;
constexpr int samples = 480;

class sound_listener : public listener
{
  public:
    void format(picture_format const&, sound_format const&) override {}
    void picture(GstBuffer*) override {}
    void sound(placed_sound const& block) override { blocks.push_back(block); }
    void ended() override {}

    ns end() const { return blocks.back().start_ns + blocks.back().samples * 1'000 * ms / blocks.back().format.rate; }

    std::vector<placed_sound> blocks;
};

class source_sound : public testing::Test
{
  protected:
    static void SetUpTestSuite() { gst_init(nullptr, nullptr); }

    source_sound()
    {
        source_.audio_format({rate, 2});
        source_.add(listener_);
    }
    ~source_sound() override { source_.remove(listener_); }

    // As a host sends it, at the time that it is due.
    ns send_block()
    {
        ns const now = monotonic_ns();
        send_block(now);
        return now;
    }
    void send_block(ns due)
    {
        std::vector<float> const planar(2 * samples, 0.5f);
        source_.audio({{rate, 2}, samples, false, planar.data(), timecode_, due});
        timecode_ += 100'000;
    }

    // Blocks of the host's that were heard.
    std::uint64_t spoken() const
    {
        auto const is_spoken = [](placed_sound const& block) { return block.planar != nullptr; };
        return static_cast<std::uint64_t>(std::count_if(listener_.blocks.begin(), listener_.blocks.end(), is_spoken));
    }

    // The tenth block, and what was heard of the next ten from a host that was held up between them.
    std::vector<placed_sound> held_up_for(ns gap)
    {
        ns const first = listener_.end(); // of the silence that sound begins with
        std::this_thread::sleep_for(std::chrono::nanoseconds{200 * ms + gap});
        for (int block = 0; block < 10; ++block)
            send_block(first + block * 10 * ms);
        auto const before = listener_.blocks.size();
        for (int block = 10; block < 20; ++block)
            send_block(first + block * 10 * ms + gap);
        return {listener_.blocks.begin() + static_cast<std::ptrdiff_t>(before) - 1, listener_.blocks.end()};
    }

    source source_{{}, "name", [] {}};
    sound_listener listener_;
    std::int64_t timecode_ = 0;
};

TEST_F(source_sound, silence_begins_once_the_host_rests_and_then_keeps_pace)
{
    ns const now = send_block();
    auto const heard = listener_.blocks.size();
    source_.tick(now + source::fill_sound_after - ms);
    EXPECT_EQ(listener_.blocks.size(), heard) << "a host that is only a little late is not spoken over";

    ns const begun = listener_.end() + source::fill_sound_after;
    source_.tick(begun);
    EXPECT_GT(listener_.end(), begun);
    EXPECT_EQ(listener_.blocks.back().planar, nullptr);
    for (ns later = 20 * ms; later <= 200 * ms; later += 20 * ms) {
        source_.tick(begun + later);
        EXPECT_GT(listener_.end(), begun + later);
        EXPECT_LE(listener_.end(), begun + later + 10 * ms);
    }
}

// A host whose sound lags behind the place of its timecode, as after a hiccup of 120 ms, is heard again soon.
TEST_F(source_sound, a_host_that_is_behind_is_not_spoken_over_for_good)
{
    send_block();
    std::this_thread::sleep_for(std::chrono::milliseconds{120});
    for (int block = 0; block < 40; ++block) {
        source_.tick(monotonic_ns());
        send_block();
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
    }
    EXPECT_GT(spoken(), 15u);
    EXPECT_NE(listener_.blocks.back().planar, nullptr);
}

TEST_F(source_sound, a_host_that_speaks_again_is_left_alone)
{
    ns const now = send_block();
    source_.tick(now + 10 * ms + source::fill_sound_after);
    send_block();
    auto const heard = listener_.blocks.size();
    source_.tick(listener_.end() + 20 * ms);
    EXPECT_EQ(listener_.blocks.size(), heard);
}

TEST_F(source_sound, short_gap_is_filled_to_the_sample)
{
    auto const heard = held_up_for(112 * ms);
    int silent = 0;
    for (std::size_t k = 1; k < heard.size(); ++k) {
        ns const end = heard[k - 1].start_ns + heard[k - 1].samples * 1'000 * ms / rate;
        EXPECT_NEAR(static_cast<double>(heard[k].start_ns - end), 0.0, 1e9 / rate) << k;
        EXPECT_TRUE(heard[k].follows) << k;
        silent += heard[k].planar ? 0 : heard[k].samples;
    }
    EXPECT_NEAR(silent, 112 * rate / 1000, 1);
    EXPECT_EQ(source_.current().sound_breaks, 1u);
}

TEST_F(source_sound, long_gap_stays_one)
{
    auto const heard = held_up_for(200 * ms);
    EXPECT_TRUE(std::all_of(heard.begin(), heard.end(), [](auto const& block) { return block.planar; }));
    EXPECT_EQ(std::count_if(heard.begin(), heard.end(), [](auto const& block) { return !block.follows; }), 1);
    EXPECT_EQ(source_.current().sound_breaks, 1u);
}

TEST_F(source_sound, what_comes_when_silence_had_its_time_is_counted)
{
    std::uint64_t sent = 0;
    auto const speak = [&](int blocks) {
        for (int block = 0; block < blocks; ++block, ++sent) {
            send_block();
            std::this_thread::sleep_for(std::chrono::milliseconds{10});
        }
    };
    while (spoken() == 0)
        speak(1);
    sent = 1;
    speak(10);
    std::this_thread::sleep_for(std::chrono::milliseconds{100});
    EXPECT_EQ(source_.current().blocks_displaced, 0u);
    source_.tick(monotonic_ns());
    speak(30);
    auto const now = source_.current();
    EXPECT_GT(now.blocks_displaced, 0u);
    EXPECT_EQ(spoken() + now.blocks_displaced, sent) << "heard, or counted";
    EXPECT_GE(now.sound_breaks, 1u);
}

// The publisher may be the first to wake of a machine that stood still; the host's sound is late, and whole.
TEST_F(source_sound, a_host_that_stood_still_with_the_machine_is_not_spoken_over)
{
    ns const first = listener_.end();
    std::this_thread::sleep_for(std::chrono::milliseconds{450});
    for (int block = 0; block < 20; ++block)
        send_block(first + block * 10 * ms);
    ns const end = listener_.end();
    ns const woke = monotonic_ns() + 200 * ms;
    source_.tick(woke - 200 * ms);
    source_.tick(woke);
    EXPECT_EQ(listener_.end(), end);
    source_.tick(woke + source::fill_sound_after - ms);
    EXPECT_EQ(listener_.end(), end);
    for (int block = 20; block < 40; ++block)
        send_block(first + block * 10 * ms);
    auto const now = source_.current();
    EXPECT_EQ(now.blocks_displaced, 0u);
    EXPECT_EQ(now.sound_breaks, 0u);
    EXPECT_EQ(spoken(), 40u);
}

TEST_F(source_sound, a_host_that_did_not_wake_with_the_machine_rests)
{
    ns const end = send_block() + 10 * ms;
    source_.tick(end);
    source_.tick(end + 200 * ms);
    for (ns later = 220 * ms; later < 200 * ms + source::fill_sound_after; later += 20 * ms)
        source_.tick(end + later);
    ASSERT_LT(listener_.end(), end + 100 * ms);
    source_.tick(end + 200 * ms + source::fill_sound_after);
    EXPECT_GT(listener_.end(), end + 200 * ms + source::fill_sound_after);
}

TEST_F(source_sound, a_machine_that_stands_still_again_and_again_keeps_no_silence_back)
{
    ns const end = send_block() + 10 * ms;
    ns const step = source::stood_still_after + 10 * ms;
    source_.tick(end);
    source_.tick(end + step);
    ASSERT_LT(listener_.end(), end + step);
    source_.tick(end + 2 * step);
    EXPECT_GT(listener_.end(), end + 2 * step);
}

TEST_F(source_sound, without_a_gap_is_none_counted)
{
    held_up_for(0);
    EXPECT_EQ(source_.current().sound_breaks, 0u);
    EXPECT_EQ(source_.current().blocks_displaced, 0u);
}

class picture_listener : public listener
{
  public:
    void format(picture_format const&, sound_format const&) override {}
    void picture(GstBuffer* shown) override { last = retain(shown); }
    void sound(placed_sound const&) override {}
    void ended() override {}

    // Where the last picture's bytes are.
    unsigned char const* place() const
    {
        GstMapInfo map;
        if (!last || !gst_buffer_map(last.get(), &map, GST_MAP_READ))
            return nullptr;
        gst_buffer_unmap(last.get(), &map);
        return map.data;
    }

    buffer_ptr last;
};

class source_pictures : public testing::Test
{
  protected:
    static void SetUpTestSuite() { gst_init(nullptr, nullptr); }

    source_pictures() { source_.add(listener_); }
    ~source_pictures() override { source_.remove(listener_); }

    // True: what is shown is the sender's own memory.
    bool shown_in_place(int width, std::uint32_t fourcc, std::shared_ptr<void const> loan)
    {
        auto const format = quillo::testing::video_format(width, 8, fourcc);
        sent_.assign(slot_bytes(format), 77);
        source_.video_format(format);
        for (int k = 0; k < source::frames_to_accept; ++k)
            source_.video({{format, sent_.data(), loan}, k * 400'000, monotonic_ns(), 0, false});
        return listener_.place() == sent_.data();
    }

    std::vector<unsigned char> sent_;
    source source_{{}, "name", [] {}};
    picture_listener listener_;
};

TEST_F(source_pictures, a_single_frame_of_another_size_and_rate_is_converted)
{
    shown_in_place(16, SenderFourCC_UYVY, nullptr);
    auto const before = retain(listener_.last.get());
    auto const odd = quillo::testing::video_format(32, 16, SenderFourCC_UYVY, 50, 1);
    std::vector<unsigned char> const bytes(slot_bytes(odd), 77);
    source_.video({{odd, bytes.data(), nullptr}, 2'000'000, monotonic_ns(), 0, false});
    ASSERT_NE(listener_.last, before) << "it is shown";
    EXPECT_EQ(gst_buffer_get_size(listener_.last.get()), 16u * 8 * 2);
}

// What the connection's thread tells the sender by: it may look only once while one goes and another one comes.
TEST_F(source_pictures, who_comes_after_the_last_one_went_is_known_from_him)
{
    unsigned const first = source_.watched();
    EXPECT_NE(first, source::nobody);
    picture_listener second;
    source_.add(second);
    EXPECT_EQ(source_.watched(), first) << "there was somebody all the time";
    source_.remove(listener_);
    EXPECT_EQ(source_.watched(), first);
    source_.remove(second);
    EXPECT_EQ(source_.watched(), source::nobody);
    source_.add(listener_);
    EXPECT_NE(source_.watched(), source::nobody);
    EXPECT_NE(source_.watched(), first);
}

// Else the memory of one bad second would be the source's for hours.
TEST_F(source_pictures, memory_of_copies_is_given_back_when_none_is_needed_for_long)
{
    ASSERT_FALSE(shown_in_place(16, SenderFourCC_UYVY, nullptr));
    bool gone = false;
    gst_mini_object_weak_ref(
        GST_MINI_OBJECT(gst_buffer_peek_memory(listener_.last.get(), 0)),
        [](gpointer told, GstMiniObject*) { *static_cast<bool*>(told) = true; }, &gone);
    auto const loan = std::make_shared<int>();
    auto const format = quillo::testing::video_format(16, 8, SenderFourCC_UYVY);
    std::int64_t timecode = 2'000'000;
    auto const show = [&](std::shared_ptr<void const> const& lent) {
        source_.video({{format, sent_.data(), lent}, timecode += 400'000, monotonic_ns(), 0, false});
    };
    for (unsigned k = 1; k < picture_store::calm; ++k)
        show(loan);
    EXPECT_FALSE(gone) << "the next copy would use it again";
    show(loan);
    EXPECT_TRUE(gone);
    show(nullptr);
    EXPECT_NE(listener_.place(), sent_.data()) << "a copy, as before";
    EXPECT_EQ(*listener_.place(), 77);
}

TEST_F(source_pictures, what_is_lent_and_has_the_right_shape_is_not_copied)
{
    auto const loan = std::make_shared<int>();
    EXPECT_TRUE(shown_in_place(16, SenderFourCC_UYVY, loan));
    EXPECT_GT(loan.use_count(), 1);
    EXPECT_TRUE(shown_in_place(18, SenderFourCC_UYVA, loan));
    EXPECT_FALSE(shown_in_place(18, SenderFourCC_UYVA, nullptr)) << "not lent";
    EXPECT_FALSE(shown_in_place(17, SenderFourCC_UYVA, loan)) << "an odd width is cut";
    EXPECT_FALSE(shown_in_place(16, SenderFourCC_BGRX, loan)) << "one byte of four goes";
    listener_.last.reset();
    EXPECT_EQ(loan.use_count(), 1) << "nobody shows it any more";
}

} // namespace
