// Connections that the publisher turns away or ends.
#include "tests/support/live_sender.h"
#include "tests/support/rtsp_socket.h"
#include "tests/support/running_publisher.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <thread>

namespace quillo::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

auto const format = video_format(64, 36, SenderFourCC_UYVY, 25, 1);

struct guarded
{
    explicit guarded(publisher::door_settings doors, publisher::rtsp_locks locks = {})
        : running(settings(std::move(doors), std::move(locks)))
    {
    }

    static publisher::publisher_settings settings(publisher::door_settings doors, publisher::rtsp_locks locks)
    {
        auto made = running_publisher::settings({});
        made.rtsp.doors = std::move(doors);
        made.rtsp.locks = std::move(locks);
        return made;
    }

    nlohmann::json turned_away() const { return nlohmann::json::parse(running.everything.status())["turned_away"]; }
    int port() const { return running.everything.port(); }
    std::string raw() const { return running.url("/source/raw"); }

    running_publisher running;
    live_sender sender{running.socket(), "Source", 1, format, noise_picture};
};

bool answers(rtsp_socket& socket) { return socket.ask("OPTIONS", "*").starts_with("RTSP/1.0 200"); }

TEST(doors, strangers_are_turned_away_before_they_say_a_word)
{
    guarded place{{.allow = *publisher::address_rules::parse("203.0.113.0/24")}};
    // Its own address is the one exception; 127.0.0.2 is not the one that was called.
    rtsp_socket own{place.port()};
    EXPECT_TRUE(answers(own));
    rtsp_socket stranger{place.port(), "127.0.0.2"};
    EXPECT_TRUE(stranger.ended_by_peer());
    EXPECT_EQ(place.turned_away()["strangers"], 1);
}

TEST(doors, no_more_come_in_than_there_is_room_for)
{
    guarded place{{.connections = 3, .connections_per_address = 2}};
    rtsp_socket first{place.port()};
    auto second = std::make_unique<rtsp_socket>(place.port());
    EXPECT_TRUE(answers(first) && answers(*second));
    rtsp_socket third{place.port()};
    EXPECT_TRUE(third.ended_by_peer());
    rtsp_socket other{place.port(), "127.0.0.2"};
    EXPECT_TRUE(answers(other));
    rtsp_socket crowd{place.port(), "127.0.0.3"};
    EXPECT_TRUE(crowd.ended_by_peer());
    EXPECT_EQ(place.turned_away()["too_many"], 2);
    // One goes, one comes.
    second.reset();
    bool came = false;
    for (int k = 0; k < 100 && !came; ++k) {
        rtsp_socket next{place.port()};
        came = answers(next);
    }
    EXPECT_TRUE(came);
}

TEST(doors, silence_ends)
{
    guarded place{{.request_time = 1s}};
    rtsp_socket silent{place.port()};
    rtsp_socket begun{place.port()};
    begun.send("DESCRIBE rtsp://");
    rtsp_socket watching{place.port()};
    ASSERT_TRUE(watching.play(place.raw()));
    EXPECT_TRUE(silent.ended_by_peer());
    EXPECT_TRUE(begun.ended_by_peer());
    EXPECT_EQ(place.turned_away()["silent"], 2);
    EXPECT_FALSE(watching.ended_by_peer(0ms));
}

TEST(doors, end_of_the_publisher_ends_everybody)
{
    auto place = std::make_unique<guarded>(publisher::door_settings{});
    rtsp_socket silent{place->port()};
    rtsp_socket asking{place->port()};
    ASSERT_TRUE(answers(asking));
    rtsp_socket watching{place->port()};
    ASSERT_TRUE(watching.play(place->raw()));
    place.reset();
    EXPECT_TRUE(watching.ended_by_peer());
    EXPECT_TRUE(asking.ended_by_peer());
    EXPECT_TRUE(silent.ended_by_peer());
}

// What is said on standard error, as it comes.
class overheard
{
  public:
    overheard() : before_(::dup(STDERR_FILENO))
    {
        open::descriptor const file{::open(name_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)};
        ::dup2(file.get(), STDERR_FILENO);
    }
    ~overheard() { ::dup2(before_.get(), STDERR_FILENO); }

    std::string so_far() const
    {
        std::ifstream file{name_};
        return {std::istreambuf_iterator<char>{file}, {}};
    }

  private:
    temporary_folder const folder_;
    std::string const name_ = folder_.path() + "/log";
    open::descriptor const before_;
};

TEST(doors, receiver_that_is_too_slow_is_named_with_cause_and_remedy)
{
    running_publisher running{running_publisher::settings({})};
    live_sender const sender{running.socket(), "Source", 1, video_format(640, 360, SenderFourCC_UYVY, 50, 1),
                             noise_picture};
    std::string said;
    {
        overheard const log;
        rtsp_socket stopped{running.everything.port()};
        ASSERT_TRUE(stopped.play(running.url("/source/raw")));
        auto const until = std::chrono::steady_clock::now() + 15s;
        while (said.find(" lost ") == std::string::npos && std::chrono::steady_clock::now() < until) {
            std::this_thread::sleep_for(20ms);
            said = log.so_far();
        }
    }
    EXPECT_THAT(said,
                ::testing::ContainsRegex("source raw: 127.0.0.1 \\(.*\\) lost [0-9]+ of [0-9]+ pictures in [0-9]+ s: "
                                         "it does not read quickly enough"));
}

TEST(doors, requests_without_an_end_are_cut_off)
{
    guarded place{{.request_size = 65536}};
    rtsp_socket endless{place.port()};
    endless.send("DESCRIBE rtsp://127.0.0.1/ RTSP/1.0\r\nCSeq: 1\r\n");
    std::string const lines = [] {
        std::string many;
        for (int k = 0; k < 1000; ++k)
            many += "X-Line: " + std::to_string(k) + "\r\n";
        return many;
    }();
    bool goes = true;
    auto const until = std::chrono::steady_clock::now() + 10s;
    while (goes && std::chrono::steady_clock::now() < until)
        goes = endless.send(lines);
    EXPECT_FALSE(goes);
    EXPECT_EQ(place.turned_away()["oversized"], 1);
}

TEST(doors, body_beyond_the_limit_is_refused)
{
    guarded place{{.request_size = 2000}};
    rtsp_socket large{place.port()};
    auto const answer = large.ask("DESCRIBE", place.raw(), "Content-Length: 2001\r\n");
    EXPECT_THAT(answer, StartsWith("RTSP/1.0 413"));
}

std::string md5(std::string const& text)
{
    return string_ptr{g_compute_checksum_for_string(G_CHECKSUM_MD5, text.c_str(), -1)}.get();
}

std::string between(std::string const& text, std::string const& before, char after)
{
    auto const at = text.find(before);
    if (at == std::string::npos)
        return {};
    auto const from = at + before.size();
    return text.substr(from, text.find(after, from) - from);
}

// As RFC 2617 has it, without qop.
std::string authorization(std::string const& challenge, std::string const& method, std::string const& uri,
                          std::string const& user, std::string const& password)
{
    auto const realm = between(challenge, "realm=\"", '"');
    auto const nonce = between(challenge, "nonce=\"", '"');
    auto const response = md5(md5(user + ":" + realm + ":" + password) + ":" + nonce + ":" + md5(method + ":" + uri));
    return "Authorization: Digest username=\"" + user + "\", realm=\"" + realm + "\", nonce=\"" + nonce + "\", uri=\"" +
           uri + "\", response=\"" + response + "\"\r\n";
}

publisher::rtsp_locks const anna{"anna", "hunter2", nullptr};

TEST(doors, password_opens_and_nothing_else_does)
{
    guarded place{{}, anna};
    rtsp_socket viewer{place.port()};
    auto const url = place.raw();
    auto const challenge = viewer.ask("DESCRIBE", url);
    EXPECT_THAT(challenge, StartsWith("RTSP/1.0 401"));
    EXPECT_THAT(challenge, HasSubstr("WWW-Authenticate: Digest realm=\"Quillo Transmit\""));
    EXPECT_THAT(challenge, Not(HasSubstr("Basic")));
    EXPECT_THAT(viewer.ask("SETUP", url + "/stream=0", "Transport: RTP/AVP/TCP;unicast;interleaved=0-1\r\n"),
                StartsWith("RTSP/1.0 401"));
    EXPECT_THAT(viewer.ask("DESCRIBE", url, authorization(challenge, "DESCRIBE", url, "anna", "hunter3")),
                StartsWith("RTSP/1.0 401"));
    EXPECT_THAT(viewer.ask("DESCRIBE", url, authorization(challenge, "DESCRIBE", url, "anne", "hunter2")),
                StartsWith("RTSP/1.0 401"));
    EXPECT_THAT(viewer.ask("DESCRIBE", url, "Authorization: Basic YW5uYTpodW50ZXIy\r\n"), StartsWith("RTSP/1.0 401"));
    EXPECT_THAT(viewer.ask("DESCRIBE", url, authorization(challenge, "DESCRIBE", url, "anna", "hunter2")),
                StartsWith("RTSP/1.0 200"));
    // One that another connection was asked with is worth nothing here.
    rtsp_socket thief{place.port()};
    EXPECT_THAT(thief.ask("DESCRIBE", url, authorization(challenge, "DESCRIBE", url, "anna", "hunter2")),
                StartsWith("RTSP/1.0 401"));
    EXPECT_THAT(place.running.everything.status(), Not(HasSubstr("hunter2")));
    EXPECT_EQ(place.turned_away()["wrong_password"], 4);
}

TEST(doors, guessing_ends_soon)
{
    guarded place{{}, anna};
    int tries = 0;
    rtsp_socket guesser{place.port()};
    auto const url = place.raw();
    auto const challenge = guesser.ask("DESCRIBE", url);
    while (tries < 100 && guesser.ask("DESCRIBE", url, authorization(challenge, "DESCRIBE", url, "anna", "x")) != "")
        ++tries;
    EXPECT_LE(tries, publisher::doors::tries);
    rtsp_socket again{place.port()};
    EXPECT_TRUE(again.ended_by_peer());
    EXPECT_EQ(place.turned_away()["locked_out"], 1);
    rtsp_socket neighbour{place.port(), "127.0.0.2"};
    EXPECT_TRUE(answers(neighbour));
}

TEST(doors, changes_are_for_those_who_come_from_then_on)
{
    guarded place{{}, anna};
    rtsp_socket before{place.port()};
    EXPECT_THAT(before.ask("DESCRIBE", place.raw()), StartsWith("RTSP/1.0 401"));
    place.running.everything.change({.connections = 2}, {}, {.raw = 0, .encoded = 64}, 0s);
    EXPECT_THAT(before.ask("DESCRIBE", place.raw()), StartsWith("RTSP/1.0 503"));
    rtsp_socket after{place.port()};
    EXPECT_THAT(after.ask("DESCRIBE", place.raw()), StartsWith("RTSP/1.0 503"));
    rtsp_socket third{place.port()};
    EXPECT_TRUE(third.ended_by_peer());
    place.running.everything.change({}, {}, {}, 0s);
    EXPECT_THAT(after.ask("DESCRIBE", place.raw()), StartsWith("RTSP/1.0 200"));
}

} // namespace
} // namespace quillo::testing
