#include "publisher/source.h"

#include <gmock/gmock.h>
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace {

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
        std::vector<float> const planar(2 * samples, 0.5f);
        ns const now = monotonic_ns();
        source_.audio({{rate, 2}, samples, false, planar.data(), timecode_, now});
        timecode_ += 100'000;
        return now;
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
    auto const& heard = listener_.blocks;
    auto const spoken =
        std::count_if(heard.begin(), heard.end(), [](auto const& block) { return block.planar != nullptr; });
    EXPECT_GT(spoken, 15);
    EXPECT_NE(heard.back().planar, nullptr);
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

} // namespace
