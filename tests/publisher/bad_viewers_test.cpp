// Receivers that are slow, dead, many, or no receivers at all.
#include "tests/support/live_sender.h"
#include "tests/support/rtsp_receiver.h"
#include "tests/support/rtsp_socket.h"
#include "tests/support/running_publisher.h"
#include "tests/support/soon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>
#include <thread>

namespace quillo::testing {
namespace {

using ::testing::ContainsRegex;

auto const format = video_format(640, 360, SenderFourCC_UYVY, 50, 1);

std::uint64_t number_in(std::vector<unsigned char> const& bytes) { return bytes[0] + 256u * bytes[1]; }

class bad_viewers : public ::testing::Test
{
  protected:
    static publisher::publisher_settings settings()
    {
        auto made = running_publisher::settings({});
        made.rtsp.dead_after = 1s;
        return made;
    }

    std::string raw() { return publisher_.url("/source/raw"); }
    int port() const { return publisher_.everything.port(); }

    nlohmann::json receivers()
    {
        return nlohmann::json::parse(publisher_.everything.status())["sources"][0]["receivers"];
    }

    running_publisher publisher_{settings()};
    live_sender sender_{publisher_.socket(), "Source", 1, format, noise_picture};
};

// Pictures that came one behind the other without a gap.
int longest_run(rtsp_receiver& receiver, int pictures)
{
    int longest = 0, run = 0;
    std::uint64_t last = 0;
    for (int k = 0; k < pictures; ++k) {
        auto const got = receiver.wait_for_picture();
        if (!got)
            break;
        auto const number = number_in(got->bytes);
        run = number == last + 1 ? run + 1 : 0;
        longest = std::max(longest, run);
        last = number;
    }
    return longest;
}

TEST_F(bad_viewers, one_that_stops_reading_is_given_up_and_harms_nobody)
{
    rtsp_receiver good{raw(), rtsp_receiver::over::tcp, rtsp_receiver::decode::raw};
    good.start();
    ASSERT_TRUE(good.wait_for_picture());
    rtsp_socket stopped{port()};
    ASSERT_TRUE(stopped.play(raw()));
    ASSERT_EQ(receivers().size(), 2u);

    // Until the watchdog has seen enough, which takes one to three seconds, the good one goes on.
    auto const until = std::chrono::steady_clock::now() + 15s;
    while (receivers().size() == 2 && std::chrono::steady_clock::now() < until)
        ASSERT_GE(longest_run(good, 20), 5);
    EXPECT_EQ(receivers().size(), 1u);
    EXPECT_TRUE(stopped.ended_by_peer());
    EXPECT_GE(longest_run(good, 20), 5);
}

TEST_F(bad_viewers, one_that_takes_next_to_nothing_is_given_up_and_named)
{
    ::testing::internal::CaptureStderr();
    rtsp_socket stuck{port()};
    bool const played = stuck.play(raw());
    stuck.read_slowly(4000, 5s);
    auto const said = ::testing::internal::GetCapturedStderr();
    ASSERT_TRUE(played);
    EXPECT_TRUE(receivers().empty());
    EXPECT_THAT(said, ContainsRegex("warning: .*source raw: 127.0.0.1 .* given up: it does not read"));
}

TEST_F(bad_viewers, one_that_reads_slowly_stays)
{
    rtsp_socket slow{port()};
    ASSERT_TRUE(slow.play(raw()));
    slow.read_slowly(200'000, 5s);
    EXPECT_EQ(receivers().size(), 1u);
}

TEST_F(bad_viewers, pictures_dropped_for_a_stopped_one_are_counted)
{
    rtsp_socket stopped{port()};
    ASSERT_TRUE(stopped.play(raw()));
    auto const until = std::chrono::steady_clock::now() + 5s;
    std::uint64_t dropped = 0;
    while (dropped < 10 && std::chrono::steady_clock::now() < until) {
        auto const now = receivers();
        if (!now.empty())
            dropped = now[0]["frames_dropped"];
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_GE(dropped, 10u);
}

TEST(bad_viewers_with_time, sound_dropped_for_a_stopped_one_is_counted_and_remembered)
{
    running_publisher publisher;
    live_sender const sender{publisher.socket(), "Source", 1, format, noise_picture};
    auto const status = [&] { return nlohmann::json::parse(publisher.everything.status())["sources"][0]; };
    {
        rtsp_socket stopped{publisher.everything.port()};
        ASSERT_TRUE(stopped.play(publisher.url("/source/raw")));
        ASSERT_TRUE(soon([&] {
            auto const receivers = status()["receivers"];
            return !receivers.empty() && receivers[0]["blocks_dropped"] > 0;
        }));
    }
    ASSERT_TRUE(soon([&] { return status()["receivers"].empty(); }));
    EXPECT_GT(status()["losses"]["receiver_late_sound"], 0);
}

TEST_F(bad_viewers, raw_viewers_beyond_the_limit_are_refused)
{
    std::vector<std::unique_ptr<rtsp_socket>> many;
    for (std::size_t k = 0; k < publisher::viewer_limits{}.raw; ++k) {
        many.push_back(std::make_unique<rtsp_socket>(port()));
        ASSERT_TRUE(many.back()->ask("DESCRIBE", raw()).starts_with("RTSP/1.0 200")) << k;
    }
    rtsp_socket one_more{port()};
    EXPECT_TRUE(one_more.ask("DESCRIBE", raw()).starts_with("RTSP/1.0 503"));
    many.pop_back();
    bool taken = false;
    for (int k = 0; k < 100 && !taken; ++k) {
        taken = one_more.ask("DESCRIBE", raw()).starts_with("RTSP/1.0 200");
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_TRUE(taken);
}

TEST_F(bad_viewers, those_who_ask_and_go_leave_their_place_at_once)
{
    ASSERT_TRUE(rtsp_socket{port()}.play(raw()));
    for (int k = 0; k < 40; ++k) {
        rtsp_socket curious{port()};
        ASSERT_TRUE(curious.ask("DESCRIBE", raw()).starts_with("RTSP/1.0 200")) << k;
    }
}

TEST_F(bad_viewers, unknown_paths_are_not_found)
{
    rtsp_socket lost{port()};
    for (auto const* path : {"/", "/other", "/source/other", "/source/raw/deeper", "/sourc", "/../source"})
        EXPECT_TRUE(lost.ask("DESCRIBE", publisher_.url(path)).starts_with("RTSP/1.0 404")) << path;
}

TEST_F(bad_viewers, rubbish_and_silence_harm_nobody)
{
    rtsp_receiver good{raw(), rtsp_receiver::over::tcp, rtsp_receiver::decode::raw};
    good.start();
    ASSERT_TRUE(good.wait_for_picture());
    rtsp_socket const silent{port()};
    std::mt19937 random{3};
    for (int round = 0; round < 30; ++round) {
        rtsp_socket rude{port()};
        std::string rubbish =
            round % 2 ? "DESCRIBE " + raw() + " RTSP/1.0\r\nCSeq: 1\r\nContent-Length: 99999999\r\n\r\n" : "";
        for (unsigned k = random() % 3000; k > 0; --k)
            rubbish += static_cast<char>(random());
        rude.send(rubbish);
    }
    EXPECT_GE(longest_run(good, 20), 5);
}

TEST_F(bad_viewers, many_that_come_and_go_leave_nothing_behind)
{
    for (int round = 0; round < 30; ++round) {
        rtsp_socket one{port()};
        ASSERT_TRUE(one.play(round % 3 ? raw() : publisher_.url("/source"), round % 5 ? 2 : 1)) << round;
    }
    EXPECT_TRUE(soon([&] { return receivers().empty(); }));
    EXPECT_TRUE(soon([&] { return !sender_.wanted(); }));
}

} // namespace
} // namespace quillo::testing
