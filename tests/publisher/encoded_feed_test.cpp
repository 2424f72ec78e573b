// What viewers of the encoded mount are given after the machine stood still.
#include "publisher/encoded_feed.h"
#include "publisher/picture_store.h"
#include "tests/support/soon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <thread>

namespace quillo::publisher {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;
using ::testing::ElementsAre;
using testing::soon;

constexpr nanoseconds stall = 400ms;

nanoseconds now() { return std::chrono::steady_clock::now().time_since_epoch(); }

class recording_viewer : public encoded_viewer
{
  public:
    enum class what { key, delta, packet, held_up, ended };
    struct event
    {
        what kind;
        nanoseconds time; // the item's own
    };

    std::vector<event> events() const
    {
        std::lock_guard const lock{mutex_};
        return events_;
    }

    // Without the times.
    std::vector<what> kinds_from(std::size_t begin) const
    {
        std::vector<what> kinds;
        std::lock_guard const lock{mutex_};
        for (auto k = begin; k < events_.size(); ++k)
            kinds.push_back(events_[k].kind);
        return kinds;
    }

  private:
    void access_unit(GstSample* unit, bool key) override { add(key ? what::key : what::delta, time_of(unit)); }
    void opus_packet(GstSample* packet) override { add(what::packet, time_of(packet)); }
    void held_up() override { add(what::held_up, {}); }
    void ended() override { add(what::ended, {}); }

    static nanoseconds time_of(GstSample* sample) { return nanoseconds{GST_BUFFER_PTS(gst_sample_get_buffer(sample))}; }

    void add(what kind, nanoseconds time)
    {
        std::lock_guard const lock{mutex_};
        events_.push_back({kind, time});
    }

    mutable std::mutex mutex_;
    std::vector<event> events_;
};

using what = recording_viewer::what;

class encoded_feed_test : public ::testing::Test
{
  protected:
    static constexpr nanoseconds block = 10ms;
    static constexpr nanoseconds frame = 20ms;

    void SetUp() override
    {
        gst_init(nullptr, nullptr);
        auto const encoder = choose_encoder();
        ASSERT_TRUE(encoder);
        picture_format format;
        format.width = 64;
        format.height = 48;
        format.rate = {50, 1};
        store_.set_format(format);
        feed_ = std::make_unique<encoded_feed>(*encoder);
        feed_->format(format, {48000, 2});
        feed_->add(viewer_);
    }

    void sound(int blocks)
    {
        for (int k = 0; k < blocks; ++k, sound_time_ += block)
            feed_->sound({{48000, 2}, 480, nullptr, sound_time_.count(), true});
    }

    // And waits for what becomes of it.
    void picture(nanoseconds time)
    {
        auto const before = viewer_.events().size() + feed_->lost().pictures;
        feed_->picture(restamped(store_.black().get(), time.count()).get());
        ASSERT_TRUE(soon([&] { return viewer_.events().size() + feed_->lost().pictures > before; }));
    }

    picture_store store_;
    recording_viewer viewer_;
    std::unique_ptr<encoded_feed> feed_;
    nanoseconds sound_time_ = now();
};

TEST_F(encoded_feed_test, viewer_that_comes_after_the_end_hears_of_it)
{
    feed_->ended();
    recording_viewer late;
    feed_->add(late);
    EXPECT_THAT(viewer_.kinds_from(0), ElementsAre(what::ended));
    EXPECT_THAT(late.kinds_from(0), ElementsAre(what::ended));
    feed_->remove(late);
}

TEST_F(encoded_feed_test, sound_left_by_a_stall_is_not_sent_and_viewers_hear_when_it_goes_on)
{
    sound(10);
    ASSERT_TRUE(soon([&] { return viewer_.events().size() >= 8; }));
    std::this_thread::sleep_for(stall);
    // All that the stall held up, and a little of what comes after it.
    sound(static_cast<int>(stall / block) + 5);
    ASSERT_TRUE(soon([&] {
        auto const kinds = viewer_.kinds_from(0);
        return std::find(kinds.begin(), kinds.end(), what::held_up) != kinds.end();
    }));

    auto const all = viewer_.events();
    auto const told =
        std::find_if(all.begin(), all.end(), [](auto const& event) { return event.kind == what::held_up; });
    ASSERT_GE(told - all.begin(), 2);
    auto const& first_again = told[-1];
    auto const& last_before = told[-2];
    ASSERT_EQ(first_again.kind, what::packet);
    auto const left_out = (first_again.time - last_before.time) / block - 1;
    EXPECT_GE(first_again.time - last_before.time, stall - stale_items::good_again - 2 * block);
    EXPECT_EQ(feed_->lost().packets, static_cast<std::uint64_t>(left_out));
    EXPECT_EQ(feed_->lost().pictures, 0u);
}

TEST_F(encoded_feed_test, picture_left_by_a_stall_is_not_sent_and_viewers_hear_of_the_key_frame_after_it)
{
    auto time = now();
    picture(time);
    picture(time += frame);
    std::this_thread::sleep_for(stall);
    auto const before = viewer_.events().size();
    picture(time += frame);
    EXPECT_EQ(viewer_.events().size(), before);
    EXPECT_EQ(feed_->lost().pictures, 1u);

    picture(time += stall);
    picture(time += frame);
    ASSERT_TRUE(soon([&] { return viewer_.events().size() == before + 3; }));
    EXPECT_THAT(viewer_.kinds_from(before), ElementsAre(what::key, what::held_up, what::delta));
    EXPECT_EQ(feed_->lost().pictures, 1u);
}

} // namespace
} // namespace quillo::publisher
