// Stock receivers on the loopback watch a publisher in this process.
#include "tests/support/held_threads.h"
#include "tests/support/live_sender.h"
#include "tests/support/rtsp_receiver.h"
#include "tests/support/rtsp_socket.h"
#include "tests/support/running_publisher.h"
#include "tests/support/soon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <cmath>
#include <future>
#include <set>

namespace quillo::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using over = rtsp_receiver::over;
using decode = rtsp_receiver::decode;

std::vector<unsigned char> fill_of(protocol::video_format_body const& format, std::vector<unsigned char> const& picture)
{
    auto const pixels = static_cast<std::size_t>(format.width * format.height);
    if (format.fourcc == SenderFourCC_UYVY || format.fourcc == SenderFourCC_UYVA)
        return {picture.begin(), picture.begin() + static_cast<std::ptrdiff_t>(pixels * 2)};
    std::vector<unsigned char> fill;
    for (std::size_t k = 0; k < pixels; ++k)
        fill.insert(fill.end(), {picture[k * 4], picture[k * 4 + 1], picture[k * 4 + 2]});
    return fill;
}

std::uint64_t number_in(std::vector<unsigned char> const& bytes) { return bytes[0] + 256u * bytes[1]; }

class raw_formats : public ::testing::TestWithParam<std::uint32_t>
{
};

TEST_P(raw_formats, arrive_byte_for_byte)
{
    running_publisher publisher;
    auto const format = video_format(322, 90, GetParam(), 30000, 1001);
    live_sender const sender{publisher.socket(), "Raw Bytes", 1, format, noise_picture};
    rtsp_receiver receiver{publisher.url("/raw-bytes/raw"), over::tcp, decode::raw};
    receiver.start();
    bool const bgr = GetParam() == SenderFourCC_BGRA || GetParam() == SenderFourCC_BGRX;
    int compared = 0;
    while (compared < 20) {
        auto const got = receiver.wait_for_picture();
        ASSERT_TRUE(got);
        ASSERT_EQ(got->width, 322);
        ASSERT_EQ(got->height, 90);
        ASSERT_EQ(got->format, bgr ? "BGR" : "UYVY");
        ASSERT_EQ(got->bytes, fill_of(format, noise_picture(format, number_in(got->bytes))));
        ++compared;
    }
}

INSTANTIATE_TEST_SUITE_P(all, raw_formats,
                         ::testing::Values(SenderFourCC_UYVY, SenderFourCC_UYVA, SenderFourCC_BGRX, SenderFourCC_BGRA));

auto const hd = video_format(320, 180, SenderFourCC_UYVY, 50, 1);

// A flat picture whose luma is 40 + 20 x (n mod 8): survives encoding.
std::vector<unsigned char> grey_picture(protocol::video_format_body const& format, std::uint64_t n)
{
    std::vector<unsigned char> bytes(picture_bytes(format), 128);
    for (std::size_t k = 1; k < bytes.size(); k += 2)
        bytes[k] = static_cast<unsigned char>(40 + 20 * (n % 8));
    return bytes;
}

bool is_black(rtsp_receiver::picture const& picture)
{
    // Packed 4:2:2 has its luma at every second byte, planar 4:2:0 in front.
    bool const packed = picture.format == "UYVY";
    auto const pixels = static_cast<std::size_t>(picture.width * picture.height);
    for (std::size_t k = 0; k < pixels; ++k)
        if (picture.bytes[packed ? 2 * k + 1 : k] > 18)
            return false;
    return true;
}

class mounts : public ::testing::Test
{
  protected:
    std::unique_ptr<live_sender> play(protocol::video_format_body const& format = hd,
                                      live_sender::generator make = grey_picture, std::uint8_t id = 1)
    {
        return std::make_unique<live_sender>(publisher_.socket(), "Adobe Premiere Pro", id, format, std::move(make));
    }

    std::unique_ptr<rtsp_receiver> watch(std::string const& mount, over transport = over::tcp)
    {
        auto made = std::make_unique<rtsp_receiver>(publisher_.url("/adobe-premiere-pro" + mount), transport,
                                                    mount.empty() ? decode::h264 : decode::raw);
        made->start();
        return made;
    }

    nlohmann::json status() { return nlohmann::json::parse(publisher_.everything.status()); }

    running_publisher publisher_;
};

using stereo = std::pair<std::int32_t, std::int32_t>;

// Of 24 bits each, big end first.
std::vector<stereo> l24_samples(std::vector<unsigned char> const& bytes)
{
    auto const value = [&](std::size_t at) {
        auto const bits = static_cast<std::uint32_t>(bytes[at]) << 24 |
                          static_cast<std::uint32_t>(bytes[at + 1]) << 16 |
                          static_cast<std::uint32_t>(bytes[at + 2]) << 8;
        return static_cast<std::int32_t>(bits) >> 8;
    };
    std::vector<stereo> samples;
    for (std::size_t k = 0; k + 6 <= bytes.size(); k += 6)
        samples.emplace_back(value(k), value(k + 3));
    return samples;
}

stereo ramp(std::uint64_t s)
{
    auto const of = [&](int channel) {
        return static_cast<std::int32_t>(std::lrintf(live_sender::sample(s, channel) * 8388608.0f));
    };
    return {of(0), of(1)};
}

TEST_F(mounts, raw_sound_arrives_sample_for_sample)
{
    auto const sender = play();
    auto const receiver = watch("/raw");
    // Where this machine stood still the sender sent nothing, or the publisher was late: it says so.
    auto const interruptions = [&] {
        auto const source = status()["sources"][0];
        return source["sound_breaks"].get<int>() + source["losses"]["audio_displaced"].get<int>();
    };
    std::vector<stereo> heard;
    int before = 0, after = -1;
    for (int k = 0; k < 5 && before != after; ++k) {
        ASSERT_FALSE(receiver->wait_for_sound(6000).empty());
        before = interruptions();
        auto const bytes = receiver->wait_for_sound(144'000);
        ASSERT_GE(bytes.size(), 144'000u);
        heard = l24_samples(bytes);
        after = interruptions();
    }
    ASSERT_EQ(before, after) << "interrupted again and again";
    // What was on its way from before; the ramp begins wherever the sender was.
    heard.erase(heard.begin(), heard.begin() + static_cast<std::ptrdiff_t>(heard.size() / 2));
    std::uint64_t phase = 0;
    while (phase < 1000 && ramp(phase) != heard[0])
        ++phase;
    ASSERT_LT(phase, 1000u);
    for (std::size_t k = 0; k < heard.size(); ++k)
        ASSERT_EQ(heard[k], ramp(phase + k)) << k;
}

TEST_F(mounts, raw_is_described_exactly_and_by_name)
{
    auto format = video_format(720, 480, SenderFourCC_UYVY, 30000, 1001);
    format.aspect = 720.0f * 10 / (480.0f * 11);
    format.frame_format = FrameFormat_interleaved;
    auto const sender = play(format, noise_picture);
    auto const receiver = watch("/raw");
    ASSERT_TRUE(receiver->wait_for_picture());
    auto const sdp = receiver->sdp();
    for (auto const* part :
         {"s=Adobe Premiere Pro", "a=rtpmap:96 RAW/90000", "sampling=YCbCr-4:2:2", "depth=8", "width=720", "height=480",
          "colorimetry=BT709-2", "exactframerate=30000/1001", "RANGE=NARROW", "TCS=SDR", "PAR=10:11",
          "a=x-quillo-fields:woven, upper field first", "a=rtpmap:97 L24/48000/2"})
        EXPECT_THAT(sdp, HasSubstr(part));
    EXPECT_THAT(sdp, Not(HasSubstr("interlace")));
}

TEST_F(mounts, default_mount_carries_h264_and_opus)
{
    auto const sender = play();
    auto const receiver = watch("");
    auto const picture = receiver->wait_for_picture();
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 320);
    EXPECT_EQ(picture->height, 180);
    EXPECT_THAT(receiver->sdp(), HasSubstr("H264/90000"));
    EXPECT_THAT(receiver->sdp(), HasSubstr("OPUS/48000/2"));
    EXPECT_GE(receiver->wait_for_sound(4800).size(), 4800u);
}

TEST_F(mounts, default_mount_shows_what_was_sent_over_udp_too)
{
    auto const sender = play();
    auto const receiver = watch("", over::udp);
    // All eight greys come by, in limited range, as they were.
    std::set<int> seen;
    for (int k = 0; k < 100 && seen.size() < 8; ++k) {
        auto const picture = receiver->wait_for_picture();
        ASSERT_TRUE(picture);
        int const level = picture->bytes[picture->bytes.size() / 3];
        if (level < 30) // nothing came in time to be shown first
            continue;
        int const nearest = (level - 40 + 10) / 20;
        EXPECT_NEAR(level, 40 + 20 * nearest, 6);
        seen.insert(nearest);
    }
    EXPECT_EQ(seen.size(), 8u);
    EXPECT_TRUE(soon([&] { return status()["sources"][0]["receivers"][0]["transport"] == "UDP"; }));
}

// Receivers count a stream anew from where it stood still, and learn from a report how sound and picture belong
// together.
class encoded_mounts : public mounts, public ::testing::WithParamInterface<over>
{
};

TEST_P(encoded_mounts, sender_reports_follow_at_once_when_the_encoders_stood_still)
{
    auto const sender = play();
    auto const receiver = watch("", GetParam());
    ASSERT_FALSE(receiver->wait_for_sound(2 * 2 * 48000).empty()); // a second of it: what is usual is known
    ASSERT_TRUE(receiver->wait_for_picture());

    auto const before = receiver->sender_reports();
    ASSERT_GE(hold_threads("in:src", 400ms), 2); // what feeds the encoders
    ASSERT_TRUE(soon([&] { return status()["sources"][0]["losses"]["encoder_late_sound"] > 0; }));
    // Each 0.5 s, where each 5 s is usual.
    EXPECT_TRUE(soon([&] { return receiver->sender_reports() >= before + 4; }, 3s));
}

INSTANTIATE_TEST_SUITE_P(all, encoded_mounts, ::testing::Values(over::tcp, over::udp),
                         [](auto const& given) { return given.param == over::tcp ? "tcp" : "udp"; });

TEST_F(mounts, time_stamps_rise_by_the_period)
{
    auto const sender = play(hd, noise_picture);
    // What follows the stall of a sender is stamped that much later: the publisher counts it, and it is watched again.
    auto const anchors = [&] { return status()["sources"][0]["anchors"].get<int>(); };
    std::vector<std::int64_t> steps;
    int before = 0, after = -1;
    for (int k = 0; k < 5 && before != after; ++k) {
        steps.clear();
        auto const receiver = watch("/raw");
        auto last = receiver->wait_for_picture();
        ASSERT_TRUE(last);
        before = anchors();
        for (int n = 0; n < 30; ++n) {
            auto next = receiver->wait_for_picture();
            ASSERT_TRUE(next);
            ASSERT_GT(next->pts_ns, last->pts_ns);
            if (n > 5 && number_in(next->bytes) == number_in(last->bytes) + 1) // no picture is missing between them
                steps.push_back(next->pts_ns - last->pts_ns);
            last = std::move(next);
        }
        after = anchors();
    }
    ASSERT_EQ(before, after) << "held up again and again";
    EXPECT_GT(steps.size(), 10u);
    for (auto const step : steps)
        EXPECT_NEAR(static_cast<double>(step), 20e6, 12e3); // a step of RTP's clock is 11111 ns
}

TEST_F(mounts, nobody_watching_means_that_nothing_is_wanted)
{
    auto const sender = play();
    EXPECT_FALSE(sender->wanted());
    {
        auto const receiver = watch("/raw");
        ASSERT_TRUE(receiver->wait_for_picture());
        EXPECT_TRUE(sender->wanted());
    }
    EXPECT_TRUE(soon([&] { return !sender->wanted(); }));
    EXPECT_TRUE(soon([&] { return status()["sources"][0]["receivers"].empty(); }));
}

TEST_F(mounts, paused_host_shows_its_picture_to_somebody_who_comes)
{
    auto const sender = play();
    sender->pause(true);
    for (auto const* mount : {"/raw", ""}) {
        auto const began = std::chrono::steady_clock::now();
        auto const receiver = watch(mount);
        auto const picture =
            receiver->wait_for_picture([](rtsp_receiver::picture const& shown) { return !is_black(shown); });
        ASSERT_TRUE(picture) << mount;
        EXPECT_LT(std::chrono::steady_clock::now() - began, 2s);
        // It goes on, and so does sound.
        EXPECT_TRUE(receiver->wait_for_picture());
        EXPECT_GE(receiver->wait_for_sound(4800).size(), 4800u);
    }
}

TEST_F(mounts, source_without_any_picture_is_black)
{
    protocol_sender sender{publisher_.socket()};
    sender.hello("Adobe Premiere Pro", 1);
    ASSERT_TRUE(sender.receive(protocol::message::welcome));
    auto const receiver = watch("/raw");
    auto const picture = receiver->wait_for_picture();
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 1280);
    EXPECT_TRUE(is_black(*picture));
}

// A receiver may be faster than the first words of a host.
TEST_F(mounts, who_comes_before_the_formats_gets_what_is_announced)
{
    protocol_sender sender{publisher_.socket()};
    sender.hello("Adobe Premiere Pro", 1);
    ASSERT_TRUE(sender.receive(protocol::message::welcome));
    auto const receiver = watch("/raw");
    ASSERT_TRUE(sender.wait_for_wants(true));
    sender.announce(protocol::audio_format_body{48000, 16});
    sender.announce(hd);
    sender.video(hd, grey_picture(hd, 1), 0);
    auto const picture = receiver->wait_for_picture({}, 2s);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 320);
    EXPECT_EQ(picture->bytes, grey_picture(hd, 1));
    EXPECT_THAT(receiver->sdp(), HasSubstr("a=rtpmap:97 L24/48000/16"));
    EXPECT_FALSE(receiver->wait_for_end(0ms));
}

class nobody_in_particular : public publisher::listener
{
    void format(publisher::picture_format const&, publisher::sound_format const&) override {}
    void picture(GstBuffer*) override {}
    void sound(publisher::placed_sound const&) override {}
    void ended() override {}
};

// What a source had to show is gone with its last viewer; a host that rests shows its picture again when it hears so.
TEST_F(mounts, sender_hears_of_somebody_who_comes_as_the_last_one_goes)
{
    protocol_sender sender{publisher_.socket()};
    sender.hello("Adobe Premiere Pro", 1);
    ASSERT_TRUE(sender.receive(protocol::message::welcome));
    auto const served = publisher_.everything.find("adobe-premiere-pro");
    ASSERT_TRUE(served);
    nobody_in_particular one, other;
    served->from->add(one);
    EXPECT_TRUE(sender.wait_for_wants(true));
    for (int times = 0; times < 5; ++times) {
        served->from->remove(one);
        served->from->add(other);
        EXPECT_TRUE(sender.wait_for_wants(false));
        EXPECT_TRUE(sender.wait_for_wants(true));
        served->from->remove(other);
        served->from->add(one);
        EXPECT_TRUE(sender.wait_for_wants(false));
        EXPECT_TRUE(sender.wait_for_wants(true));
    }
    served->from->remove(one);
}

TEST_F(mounts, who_waits_for_a_description_is_not_left_waiting_when_sound_changes)
{
    protocol_sender sender{publisher_.socket()};
    sender.hello("Adobe Premiere Pro", 1);
    ASSERT_TRUE(sender.receive(protocol::message::welcome));
    auto const receiver = watch("/raw");
    ASSERT_TRUE(sender.wait_for_wants(true));
    sender.announce(protocol::audio_format_body{48000, 2});
    sender.announce(protocol::audio_format_body{48000, 16});
    sender.announce(hd);
    sender.video(hd, grey_picture(hd, 1), 0);
    EXPECT_TRUE(receiver->wait_for_picture());
    EXPECT_THAT(receiver->sdp(), ::testing::HasSubstr("L24/48000/16"));
}

TEST_F(mounts, who_waits_for_a_description_is_not_left_waiting_when_the_sender_goes)
{
    for (auto const* mount : {"/raw", "/raw+key", "/bgra", ""})
        for (bool const has_sound : {false, true}) {
            auto sender = std::make_unique<protocol_sender>(publisher_.socket());
            sender->hello("Adobe Premiere Pro", 1);
            ASSERT_TRUE(sender->receive(protocol::message::welcome));
            if (has_sound)
                sender->announce(protocol::audio_format_body{48000, 2});
            sender->announce(hd);
            rtsp_socket asking{publisher_.everything.port()};
            auto answer = std::async(std::launch::async, [&] {
                return asking.ask("DESCRIBE", publisher_.url(std::string{"/adobe-premiere-pro"} + mount));
            });
            ASSERT_TRUE(sender->wait_for_wants(true));
            sender.reset();
            ASSERT_EQ(answer.wait_for(3s), std::future_status::ready) << mount;
            auto const got = answer.get();
            // Where the shape of the sound is known a black picture and silence may have made a description whole.
            bool const described = got.starts_with("RTSP/1.0 200");
            EXPECT_TRUE(got.starts_with("RTSP/1.0 503") || (has_sound && described)) << mount << ": " << got;
            EXPECT_TRUE(asking.ended_by_peer()) << mount;
        }
}

TEST_F(mounts, sender_that_has_a_picture_is_given_time_to_hand_it_over)
{
    protocol_sender sender{publisher_.socket()};
    sender.hello("Adobe Premiere Pro", 1);
    sender.announce(hd);
    ASSERT_TRUE(sender.receive(protocol::message::welcome));
    ASSERT_TRUE(soon([&] { return !status()["sources"][0]["format"].is_null(); }));
    auto const began = std::chrono::steady_clock::now();
    auto const receiver = watch("/raw");
    auto const picture = receiver->wait_for_picture();
    ASSERT_TRUE(picture);
    EXPECT_TRUE(is_black(*picture));
    EXPECT_GE(std::chrono::steady_clock::now() - began, 1s);
}

TEST_F(mounts, no_picture_frame_is_black_at_the_announced_size)
{
    for (auto const* mount : {"/raw", ""}) {
        auto const sender = play();
        auto const receiver = watch(mount);
        ASSERT_TRUE(receiver->wait_for_picture([](auto const& shown) { return !is_black(shown); }));
        sender->change_format(video_format(8, 8, SenderFourCC_BGRX, 50, 1));
        auto const black = receiver->wait_for_picture(is_black);
        ASSERT_TRUE(black) << mount;
        EXPECT_EQ(black->width, 320);
        EXPECT_EQ(black->height, 180);
        sender->change_format(hd);
        EXPECT_TRUE(receiver->wait_for_picture([](auto const& shown) { return !is_black(shown); })) << mount;
        EXPECT_EQ(status()["sources"][0]["receivers"].size(), 1u);
    }
}

TEST_F(mounts, new_size_reaches_encoded_viewers_in_band)
{
    auto const sender = play();
    auto const receiver = watch("");
    ASSERT_TRUE(receiver->wait_for_picture());
    sender->change_format(video_format(480, 270, SenderFourCC_UYVY, 50, 1));
    EXPECT_TRUE(receiver->wait_for_picture([](auto const& shown) { return shown.width == 480; }));
    sender->change_format(video_format(320, 180, SenderFourCC_BGRX, 50, 1));
    EXPECT_TRUE(receiver->wait_for_picture([](auto const& shown) { return shown.width == 320; }));
    EXPECT_EQ(status()["sources"][0]["receivers"].size(), 1u);
}

TEST_F(mounts, new_size_ends_raw_viewers_who_are_told_when_they_come_back)
{
    auto const sender = play();
    auto const receiver = watch("/raw");
    ASSERT_TRUE(receiver->wait_for_picture());
    sender->change_format(video_format(480, 270, SenderFourCC_UYVY, 50, 1));
    EXPECT_TRUE(receiver->wait_for_end());
    auto const again = watch("/raw");
    auto const picture = again->wait_for_picture();
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 480);
}

TEST_F(mounts, single_frame_of_another_size_is_converted)
{
    protocol_sender sender{publisher_.socket()};
    sender.hello("Adobe Premiere Pro", 1);
    sender.announce(hd);
    ASSERT_TRUE(sender.receive(protocol::message::welcome));
    auto const receiver = watch("/raw");
    ASSERT_TRUE(sender.wait_for_wants(true));
    auto const size = video_format(640, 360, SenderFourCC_UYVY, 50, 1);
    std::int64_t timecode = 0;
    auto const send = [&](protocol::video_format_body const& format, std::uint64_t grey) {
        sender.video(format, grey_picture(format, grey), timecode += 200'000);
    };
    auto const shows = [&](std::uint64_t grey) {
        return receiver->wait_for_picture([&](rtsp_receiver::picture const& shown) {
            return shown.width == 320 && shown.bytes[1] == 40 + 20 * grey;
        });
    };
    send(hd, 1);
    ASSERT_TRUE(shows(1));
    send(size, 2);
    EXPECT_TRUE(shows(2));
    send(hd, 3);
    EXPECT_TRUE(shows(3));
    EXPECT_FALSE(receiver->wait_for_end(0ms));
}

TEST_F(mounts, killed_viewer_is_forgotten_and_others_go_on)
{
    auto const sender = play(hd, noise_picture);
    auto const staying = watch("/raw");
    auto last = staying->wait_for_picture();
    ASSERT_TRUE(last);
    auto const dropped = [&] { return status()["sources"][0]["receivers"][0]["frames_dropped"].get<std::uint64_t>(); };
    auto const dropped_before = dropped();
    std::uint64_t missing = 0;
    auto const go_on = [&](int pictures) {
        for (int k = 0; k < pictures; ++k) {
            auto next = staying->wait_for_picture();
            ASSERT_TRUE(next);
            ASSERT_GT(number_in(next->bytes), number_in(last->bytes));
            missing += number_in(next->bytes) - number_in(last->bytes) - 1;
            last = std::move(next);
        }
    };
    // Goes through DESCRIBE and SETUP like any other, then is gone in the middle of a frame.
    watch("/raw")->wait_for_picture();
    EXPECT_TRUE(soon([&] { return status()["sources"][0]["receivers"].size() == 1; }));
    go_on(6);
    missing = 0; // what it began with, or kept for us no longer
    go_on(20);
    EXPECT_LE(missing, dropped() - dropped_before) << "lost, and not counted";
}

TEST_F(mounts, end_of_the_sender_ends_its_viewers)
{
    auto sender = play();
    auto const raw = watch("/raw");
    auto const encoded = watch("");
    auto const over_udp = watch("", over::udp);
    ASSERT_TRUE(raw->wait_for_picture());
    ASSERT_TRUE(encoded->wait_for_picture());
    ASSERT_TRUE(over_udp->wait_for_picture());
    sender.reset();
    EXPECT_TRUE(over_udp->wait_for_end());
    EXPECT_TRUE(raw->wait_for_end());
    EXPECT_TRUE(encoded->wait_for_end());
    EXPECT_TRUE(soon([&] { return status()["sources"].empty(); }));
    rtsp_receiver late{publisher_.url("/adobe-premiere-pro"), over::tcp, decode::h264};
    late.start();
    EXPECT_TRUE(late.wait_for_end());
}

TEST_F(mounts, same_name_twice_gets_two_paths_and_a_sender_its_own_again)
{
    auto first = play(hd, grey_picture, 1);
    auto const second = play(hd, grey_picture, 2);
    ASSERT_EQ(status()["sources"].size(), 2u);
    EXPECT_EQ(status()["sources"][0]["path"], "/adobe-premiere-pro");
    EXPECT_EQ(status()["sources"][1]["path"], "/adobe-premiere-pro-2");
    first.reset();
    EXPECT_TRUE(soon([&] { return status()["sources"].size() == 1; }));
    first = play(hd, grey_picture, 1);
    EXPECT_EQ(status()["sources"][1]["path"], "/adobe-premiere-pro");
    rtsp_receiver receiver{publisher_.url("/adobe-premiere-pro-2/raw"), over::tcp, decode::raw};
    receiver.start();
    EXPECT_TRUE(receiver.wait_for_picture());
}

TEST_F(mounts, sender_that_is_back_before_it_is_missed_takes_its_own_place)
{
    auto const before = play(hd, grey_picture, 1);
    auto const after = play(hd, grey_picture, 1);
    ASSERT_EQ(status()["sources"].size(), 1u);
    EXPECT_EQ(status()["sources"][0]["path"], "/adobe-premiere-pro");
    auto const receiver = watch("/raw");
    EXPECT_TRUE(receiver->wait_for_picture());
    EXPECT_TRUE(after->wanted());
    EXPECT_FALSE(before->wanted());
}

TEST_F(mounts, status_tells_of_source_and_receiver)
{
    auto const sender = play();
    auto const receiver = watch("/raw");
    ASSERT_TRUE(receiver->wait_for_picture());
    ASSERT_TRUE(soon([&] { return status()["sources"][0]["receivers"][0]["frames_sent"] > 5; }));
    protocol_sender asker{publisher_.socket()};
    auto const told = nlohmann::json::parse(asker.status());
    EXPECT_EQ(told["pid"], ::getpid());
    auto const source = told["sources"][0];
    EXPECT_EQ(source["name"], "Adobe Premiere Pro");
    EXPECT_EQ(source["id"], "01000000000000000000000000000000");
    EXPECT_EQ(source["pid"], ::getpid());
    EXPECT_EQ(source["format"]["width"], 320);
    EXPECT_EQ(source["format"]["fourcc"], "UYVY");
    EXPECT_EQ(source["format"]["rate"], (nlohmann::json{50, 1}));
    EXPECT_EQ(source["format"]["frame_format"], "progressive");
    EXPECT_EQ(source["audio"]["channels"], 2);
    EXPECT_GT(source["frames_in"], 5);
    EXPECT_EQ(source["receivers"][0]["mount"], "raw");
    EXPECT_EQ(source["receivers"][0]["address"], "127.0.0.1");
    EXPECT_EQ(source["receivers"][0]["transport"], "TCP");
    EXPECT_THAT(source["receivers"][0]["agent"], HasSubstr("GStreamer"));
}

TEST_F(mounts, address_is_good_for_every_request)
{
    auto const sender = play();
    for (auto const* mount : {"", "/raw", "/raw+key"}) {
        rtsp_socket simple{publisher_.everything.port()}; // one that does not care for the description's base
        EXPECT_TRUE(simple.play(publisher_.url("/adobe-premiere-pro") + mount)) << mount;
    }
}

TEST_F(mounts, raw_is_over_tcp_only)
{
    auto const sender = play();
    auto const receiver = watch("/raw", over::udp);
    EXPECT_TRUE(receiver->wait_for_end());
}

TEST(running_twice, second_publisher_of_a_user_is_told_so)
{
    running_publisher const first;
    EXPECT_THROW(publisher::folder_lock{first.folder.path()}, publisher::folder_lock::already_running);
}

TEST(running_twice, taken_port_means_the_next_free_one)
{
    running_publisher const first;
    auto settings = running_publisher::settings({});
    settings.rtsp.port = first.everything.port();
    publisher::publisher const second{settings};
    EXPECT_GT(second.port(), first.everything.port());
    EXPECT_LT(second.port(), first.everything.port() + publisher::rtsp_server::ports_to_try);
}

} // namespace
} // namespace quillo::testing
