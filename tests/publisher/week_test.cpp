// A week without a pause, on a clock that takes no time: no time stamp may ever be off its rational value, whatever
// counts over on the way (90 kHz in 32 bits does so every 13 hours, 48 kHz every 25, samples in 31 bits every 12).
#include "publisher/caps.h"
#include "publisher/mounts/raw_payloader.h"
#include "publisher/picture_store.h"
#include "publisher/pipeline.h"
#include "publisher/sound_copy.h"
#include "publisher/time_base.h"

#include <gst/app/gstappsrc.h>
#include <gst/rtp/gstrtpbuffer.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <mutex>

namespace quillo::publisher {
namespace {

using ns = time_base::ns;

constexpr std::int64_t week_s = 7 * 24 * 3600;
constexpr ns second = 1'000'000'000;
constexpr ns clock_start = 987'654'321'012'345;     // of the common clock
constexpr std::int64_t timecode_start = 36'000'000; // of the host, 100 ns

// count * n / d, rounded down.
std::int64_t scaled(std::int64_t count, std::int64_t n, std::int64_t d)
{
    return static_cast<std::int64_t>(
        gst_util_uint64_scale(static_cast<guint64>(count), static_cast<guint64>(n), static_cast<guint64>(d)));
}

std::int64_t timecode_of(std::int64_t frame, rational rate) { return scaled(frame, 10'000'000ll * rate.d, rate.n); }

// What arrives is up to 20 ms late, in no order that repeats soon.
ns lateness(std::int64_t k) { return static_cast<ns>(static_cast<std::uint64_t>(k) * 2654435761u % 20'000'000u); }

class week_of_pictures : public ::testing::TestWithParam<rational>
{
};

TEST_P(week_of_pictures, has_the_rational_time_at_every_frame)
{
    auto const rate = GetParam();
    time_base time;
    std::int64_t const frames = scaled(week_s, rate.n, rate.d);
    ns const first = clock_start + lateness(0);
    for (std::int64_t frame = 0; frame < frames; ++frame) {
        std::int64_t const timecode = timecode_of(frame, rate);
        ns const got = time.picture(timecode_start + timecode, clock_start + timecode * 100 + lateness(frame));
        ASSERT_EQ(got, first + timecode * 100) << frame;
    }
    EXPECT_EQ(time.anchors(), 1u);
}

INSTANTIATE_TEST_SUITE_P(rates, week_of_pictures,
                         ::testing::Values(rational{24000, 1001}, rational{30000, 1001}, rational{60000, 1001}));

struct blocks
{
    int rate;
    int samples;
};

class week_of_sound : public ::testing::TestWithParam<blocks>
{
};

TEST_P(week_of_sound, has_the_rational_time_at_every_block_beside_pictures)
{
    auto const [rate, samples] = GetParam();
    time_base time;
    rational const pictures{60000, 1001};
    std::int64_t const count = week_s * rate / samples;
    ns const first = clock_start + lateness(0);
    std::int64_t frame = 0;
    for (std::int64_t block = 0; block < count; ++block) {
        std::int64_t const timecode = scaled(block * samples, 10'000'000, rate);
        ns const arrival = clock_start + timecode * 100 + lateness(block);
        auto const placed = time.sound(timecode_start + timecode, arrival, samples, rate);
        ASSERT_FALSE(placed.late) << block;
        ASSERT_EQ(placed.follows, block > 0) << block;
        ASSERT_EQ(placed.start, first + scaled(block * samples, second, rate)) << block;
        // A picture a second is enough to see that both stay together.
        if (block % 100 == 0) {
            frame = scaled(timecode, pictures.n, 10'000'000ll * pictures.d);
            std::int64_t const of_picture = timecode_of(frame, pictures);
            ASSERT_EQ(time.picture(timecode_start + of_picture, arrival), first + of_picture * 100) << frame;
        }
    }
    EXPECT_EQ(time.anchors(), 1u);
}

INSTANTIATE_TEST_SUITE_P(rates, week_of_sound,
                         ::testing::Values(blocks{48000, 480}, blocks{44100, 441}, blocks{22050, 220}));

// The time in the packets of a payloader's stream, in units of its clock, from the first one on.
class payloader
{
  public:
    payloader(char const* element, caps_ptr const& caps)
        : line_{std::string{"appsrc name=in format=time is-live=true ! "} + element +
                    " seqnum-offset=65000 timestamp-offset=4294960000 ! appsink name=out sync=false",
                [this](GstSample* sample) { take(sample); }}
    {
        gst_app_src_set_caps(GST_APP_SRC(line_.in()), caps.get());
    }

    std::uint32_t time_of(GstBuffer* buffer)
    {
        line_.push(buffer);
        std::unique_lock lock{mutex_};
        came_.wait_for(lock, std::chrono::seconds{5}, [&] { return !times_.empty(); });
        if (times_.empty())
            throw std::runtime_error{"no packet"};
        auto const time = times_.front();
        times_.clear();
        return time - 4294960000u;
    }

  private:
    void take(GstSample* sample)
    {
        GstRTPBuffer packet = GST_RTP_BUFFER_INIT;
        if (!gst_rtp_buffer_map(gst_sample_get_buffer(sample), GST_MAP_READ, &packet))
            return;
        bool const last = gst_rtp_buffer_get_marker(&packet) || gst_rtp_buffer_get_payload_type(&packet) == 97;
        auto const time = gst_rtp_buffer_get_timestamp(&packet);
        gst_rtp_buffer_unmap(&packet);
        std::lock_guard const lock{mutex_};
        if (last)
            times_.push_back(time);
        came_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable came_;
    std::deque<std::uint32_t> times_;
    pipeline line_;
};

constexpr std::int64_t wrap = 1ll << 32;

TEST(week_of_packets, picture_times_wrap_every_thirteen_hours_and_stay_rational)
{
    gst_init(nullptr, nullptr);
    rational const rate{60000, 1001};
    picture_format format;
    format.width = format.height = 2;
    format.rate = rate;
    picture_store store;
    store.set_format(format);
    payloader line{(raw_payloader() + std::string{" pt=96"}).c_str(), picture_caps(format)};
    ns const base = clock_start / 1'000'000 * 1'000'000;
    int wraps = 0;
    std::uint32_t const first = line.time_of(restamped(store.black().get(), base).get());
    for (std::int64_t turn = 1; turn * wrap / 90000 < week_s; ++turn, ++wraps) {
        std::int64_t const middle = scaled(turn * wrap, rate.n, 90000ll * rate.d);
        for (std::int64_t frame = middle - 30; frame < middle + 30; ++frame) {
            ns const time = base + timecode_of(frame, rate) * 100;
            auto const got = line.time_of(restamped(store.black().get(), time).get()) - first;
            // Rounding: of the timecode to 100 ns, of both packets' times to the clock.
            auto const rational_time = scaled(frame, 90000ll * rate.d, rate.n);
            auto const off = static_cast<std::int32_t>(got - static_cast<std::uint32_t>(rational_time % wrap));
            ASSERT_LE(std::abs(off), 1) << frame;
        }
    }
    EXPECT_EQ(wraps, 12);
}

TEST(week_of_packets, sound_times_wrap_every_day_and_stay_rational)
{
    gst_init(nullptr, nullptr);
    sound_format const format{48000, 2};
    payloader line{"rtpL24pay pt=97 mtu=60000 perfect-rtptime=false", s24be_caps(format)};
    ns const base = clock_start / second * second;
    auto const block = [&](std::int64_t number, bool follows) {
        return as_s24be({format, 480, nullptr, base + number * 10'000'000, follows});
    };
    std::uint32_t const first = line.time_of(block(0, false).get());
    int wraps = 0;
    for (std::int64_t turn = 1; turn * wrap / 48000 < week_s; ++turn, ++wraps) {
        std::int64_t const begin = turn * wrap / 480 - 30; // the days before are jumped over
        for (std::int64_t number = begin; number < begin + 60; ++number)
            ASSERT_EQ(line.time_of(block(number, number > begin).get()) - first,
                      static_cast<std::uint32_t>(number * 480 % wrap));
    }
    EXPECT_EQ(wraps, 6);
}

} // namespace
} // namespace quillo::publisher
