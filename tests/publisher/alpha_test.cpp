// Alpha through /raw+key and /bgra, byte for byte, as GStreamer and ffmpeg receive it.
#include "tests/support/live_sender.h"
#include "tests/support/reference/reference.h"
#include "tests/support/rtsp_receiver.h"
#include "tests/support/running_publisher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

namespace quillo::testing {
namespace {

namespace reference = conversions::reference;
using ::testing::HasSubstr;
using ::testing::Not;
using bytes = std::vector<unsigned char>;

constexpr int fill_payload = 96;
constexpr int key_payload = 98;

bool is_422(std::uint32_t fourcc) { return fourcc == SenderFourCC_UYVY || fourcc == SenderFourCC_UYVA; }
bool has_alpha(std::uint32_t fourcc) { return fourcc == SenderFourCC_UYVA || fourcc == SenderFourCC_BGRA; }

// The alpha that belongs to a picture, 255 where it has none.
bytes alpha_of(protocol::video_format_body const& format, bytes const& picture)
{
    auto const pixels = static_cast<std::size_t>(format.width * format.height);
    bytes alpha(pixels, 255);
    for (std::size_t k = 0; k < pixels && has_alpha(format.fourcc); ++k)
        alpha[k] = is_422(format.fourcc) ? picture[pixels * 2 + k] : picture[k * 4 + 3];
    return alpha;
}

bytes expected_fill(protocol::video_format_body const& format, bytes const& picture)
{
    auto const pixels = static_cast<std::size_t>(format.width * format.height);
    if (is_422(format.fourcc))
        return {picture.begin(), picture.begin() + static_cast<std::ptrdiff_t>(pixels * 2)};
    bytes bgr, fill(pixels * 2);
    for (std::size_t k = 0; k < pixels; ++k)
        bgr.insert(bgr.end(), {picture[k * 4], picture[k * 4 + 1], picture[k * 4 + 2]});
    reference::bgr_to_uyvy(bgr.data(), fill.data(), static_cast<int>(pixels));
    return fill;
}

bytes expected_key(bytes const& alpha)
{
    bytes key;
    for (auto const a : alpha)
        key.insert(key.end(), {128, a});
    return key;
}

bytes expected_bgra(protocol::video_format_body const& format, bytes const& picture)
{
    auto const alpha = alpha_of(format, picture);
    bytes joined = picture;
    joined.resize(alpha.size() * 4);
    auto const width = static_cast<std::size_t>(format.width);
    if (is_422(format.fourcc)) // line by line: the last pixels of each are converted apart from the others
        for (std::size_t at = 0; at < alpha.size(); at += width)
            reference::uyvy_to_rgba(&picture[at * 2], &alpha[at], &joined[at * 4], format.width,
                                    reference::matrix::bt709, reference::rgb_order::bgra);
    else
        for (std::size_t k = 0; k < alpha.size(); ++k)
            joined[k * 4 + 3] = alpha[k];
    return joined;
}

// Every alpha, over noise. The number modulo 256 is in the first byte and the first alpha.
bytes ramp(protocol::video_format_body const& format, std::uint64_t number)
{
    number %= 256;
    auto picture = noise_picture(format, number);
    auto const pixels = static_cast<std::size_t>(format.width * format.height);
    for (std::size_t k = 0; k < pixels && has_alpha(format.fourcc); ++k)
        picture[is_422(format.fourcc) ? pixels * 2 + k : k * 4 + 3] = static_cast<unsigned char>(k + number);
    return picture;
}

// White, of which more is seen from picture to picture. Straight alpha leaves the white alone.
bytes white_on_white(protocol::video_format_body const& format, std::uint64_t number)
{
    auto const pixels = static_cast<std::size_t>(format.width * format.height);
    bytes picture(picture_bytes(format), 255);
    auto const alpha = static_cast<unsigned char>(number);
    for (std::size_t k = 0; k < pixels; ++k)
        if (is_422(format.fourcc)) {
            picture[k * 2] = 128;
            picture[k * 2 + 1] = 235;
            picture[pixels * 2 + k] = alpha;
        } else {
            picture[k * 4 + 3] = alpha;
        }
    return picture;
}

class alpha_formats : public ::testing::TestWithParam<std::uint32_t>
{
  protected:
    void send(live_sender::generator const& make)
    {
        sender_ = std::make_unique<live_sender>(publisher_.socket(), "Alpha", 1, format_, make);
    }
    std::string url(std::string const& mount) { return publisher_.url("/alpha" + mount); }
    bool bgr() const { return !is_422(GetParam()); }

    // Not a multiple of what vectors hold, nor of four.
    protocol::video_format_body const format_ = video_format(322, 90, GetParam(), 30000, 1001);
    running_publisher publisher_;
    std::unique_ptr<live_sender> sender_;
};

constexpr std::int64_t same_time_ns = 5'000'000; // a quarter of the shortest picture here

struct pair
{
    bytes fill, key;
};

// So many pictures with their keys. They belong together as a keyer takes them: a receiver's clock, once the sender's
// reports have come, puts both streams of it at the same time, give or take its rounding.
std::vector<pair> receive_pairs(rtsp_receiver& receiver, std::size_t pairs)
{
    std::vector<pair> whole;
    std::map<int, std::map<std::int64_t, bytes>> waiting; // by payload and time
    for (std::size_t seen = 0; whole.size() < pairs && seen < pairs * 10; ++seen) {
        auto const got = receiver.wait_for_picture();
        if (!got)
            break;
        auto& others = waiting[got->payload == fill_payload ? key_payload : fill_payload];
        auto const other = others.lower_bound(got->pts_ns - same_time_ns);
        if (other == others.end() || other->first > got->pts_ns + same_time_ns) {
            waiting[got->payload][got->pts_ns] = got->bytes;
            continue;
        }
        whole.push_back(got->payload == fill_payload ? pair{got->bytes, other->second}
                                                     : pair{other->second, got->bytes});
        others.erase(other);
    }
    return whole;
}

TEST_P(alpha_formats, fill_and_key_arrive_byte_for_byte_in_gstreamer)
{
    send(ramp);
    rtsp_receiver receiver{url("/raw+key"), rtsp_receiver::over::tcp, rtsp_receiver::decode::raw};
    receiver.start();
    auto const pairs = receive_pairs(receiver, 20);
    ASSERT_EQ(pairs.size(), 20u);
    for (auto const& [fill, key] : pairs) {
        // A converted fill does not tell its number, the key of a source with alpha does.
        std::uint64_t const number = is_422(GetParam()) ? fill[0] : key[1];
        auto const sent = ramp(format_, number);
        EXPECT_EQ(key, expected_key(alpha_of(format_, sent)));
        if (GetParam() != SenderFourCC_BGRX) {
            EXPECT_EQ(fill, expected_fill(format_, sent));
        }
    }
    EXPECT_GE(receiver.wait_for_sound(4800).size(), 4800u);
}

TEST_P(alpha_formats, bgra_arrives_byte_for_byte_in_gstreamer)
{
    send(ramp);
    rtsp_receiver receiver{url("/bgra"), rtsp_receiver::over::tcp, rtsp_receiver::decode::raw};
    receiver.start();
    for (int k = 0; k < 20; ++k) {
        auto const got = receiver.wait_for_picture();
        ASSERT_TRUE(got);
        ASSERT_EQ(got->format, "BGRA");
        if (GetParam() == SenderFourCC_UYVY)
            continue; // tells its number nowhere
        std::uint64_t const number = bgr() ? got->bytes[0] : got->bytes[3];
        EXPECT_EQ(got->bytes, expected_bgra(format_, ramp(format_, number)));
    }
}

INSTANTIATE_TEST_SUITE_P(all, alpha_formats,
                         ::testing::Values(SenderFourCC_UYVY, SenderFourCC_UYVA, SenderFourCC_BGRX, SenderFourCC_BGRA));

// The pictures of one stream as ffmpeg delivers them, without any conversion.
std::vector<bytes> pictures_in(std::filesystem::path const& file, std::size_t size)
{
    std::ifstream in{file, std::ios::binary};
    bytes const all{std::istreambuf_iterator<char>{in}, {}};
    std::vector<bytes> pictures;
    for (std::size_t at = 0; at + size <= all.size(); at += size)
        pictures.emplace_back(all.begin() + static_cast<std::ptrdiff_t>(at),
                              all.begin() + static_cast<std::ptrdiff_t>(at + size));
    return pictures;
}

class alpha_sources : public alpha_formats
{
  protected:
    struct streams
    {
        std::vector<bytes> fills, keys;
    };

    streams receive_with_ffmpeg(int frames)
    {
        auto const fill = publisher_.folder.path() + "/fill";
        auto const key = publisher_.folder.path() + "/key";
        std::string const limit =
            " -frames:v " + std::to_string(frames) + " -vsync passthrough -pix_fmt uyvy422 -f rawvideo ";
        auto const command = "timeout 60 ffmpeg -nostdin -v error -rtsp_transport tcp -i " + url("/raw+key") +
                             " -map 0:v:0" + limit + fill + " -map 0:v:1" + limit + key;
        EXPECT_EQ(std::system(command.c_str()), 0);
        auto const size = static_cast<std::size_t>(format_.width * format_.height * 2);
        return {pictures_in(fill, size), pictures_in(key, size)};
    }
};

TEST_P(alpha_sources, fill_and_key_of_a_ramp_arrive_byte_for_byte_in_ffmpeg)
{
    send(ramp);
    auto const [fills, keys] = receive_with_ffmpeg(30);
    ASSERT_EQ(fills.size(), 30u);
    ASSERT_EQ(keys.size(), 30u);
    for (std::size_t k = 0; k < keys.size(); ++k) {
        auto const sent = ramp(format_, keys[k][1]);
        EXPECT_EQ(keys[k], expected_key(alpha_of(format_, sent))) << k;
        EXPECT_EQ(fills[k], expected_fill(format_, sent)) << k;
    }
}

TEST_P(alpha_sources, white_fades_on_white_without_turning_grey_in_ffmpeg)
{
    send(white_on_white);
    auto const [fills, keys] = receive_with_ffmpeg(30);
    ASSERT_EQ(fills.size(), 30u);
    ASSERT_EQ(keys.size(), 30u);
    bytes const white = expected_fill(format_, white_on_white(format_, 0));
    ASSERT_EQ(white[1], 235);
    std::set<int> seen;
    for (std::size_t k = 0; k < keys.size(); ++k) {
        EXPECT_EQ(fills[k], white) << k;
        EXPECT_EQ(keys[k], expected_key(bytes(white.size() / 2, keys[k][1]))) << k;
        seen.insert(keys[k][1]);
    }
    EXPECT_GT(seen.size(), 10u);
}

TEST_P(alpha_sources, white_fades_on_white_without_turning_grey_in_gstreamer)
{
    send(white_on_white);
    rtsp_receiver with_key{url("/raw+key"), rtsp_receiver::over::tcp, rtsp_receiver::decode::raw};
    rtsp_receiver joined{url("/bgra"), rtsp_receiver::over::tcp, rtsp_receiver::decode::raw};
    with_key.start();
    bytes const white = expected_fill(format_, white_on_white(format_, 0));
    auto const pairs = receive_pairs(with_key, 20);
    ASSERT_EQ(pairs.size(), 20u);
    for (auto const& [fill, key] : pairs) {
        EXPECT_EQ(fill, white);
        EXPECT_EQ(key, expected_key(bytes(white.size() / 2, key[1])));
    }
    joined.start();
    for (int k = 0; k < 20; ++k) {
        auto const got = joined.wait_for_picture();
        ASSERT_TRUE(got);
        auto const sent = white_on_white(format_, got->bytes[3]);
        EXPECT_EQ(got->bytes, expected_bgra(format_, sent));
        // The conversion from 4:2:2 gives white as 253, 255, 255.
        EXPECT_GE(got->bytes[0], bgr() ? 255 : 253);
    }
}

INSTANTIATE_TEST_SUITE_P(with_alpha, alpha_sources, ::testing::Values(SenderFourCC_UYVA, SenderFourCC_BGRA));

class alpha : public ::testing::Test
{
  protected:
    std::unique_ptr<live_sender> play(std::uint32_t fourcc, int width = 320)
    {
        return std::make_unique<live_sender>(publisher_.socket(), "Alpha", 1, video_format(width, 180, fourcc, 50, 1),
                                             ramp);
    }
    std::unique_ptr<rtsp_receiver> watch(std::string const& mount)
    {
        auto made = std::make_unique<rtsp_receiver>(publisher_.url("/alpha" + mount), rtsp_receiver::over::tcp,
                                                    rtsp_receiver::decode::raw);
        made->start();
        return made;
    }

    running_publisher publisher_;
};

TEST_F(alpha, fill_and_key_are_described)
{
    auto const sender = play(SenderFourCC_BGRA);
    auto const receiver = watch("/raw+key");
    ASSERT_TRUE(receiver->wait_for_picture());
    auto const sdp = receiver->sdp();
    EXPECT_THAT(sdp, HasSubstr("a=group:LS fill key"));
    auto const fill = sdp.substr(sdp.find("m=video"), sdp.find("m=audio") - sdp.find("m=video"));
    EXPECT_THAT(fill, HasSubstr("sampling=YCbCr-4:2:2"));
    EXPECT_THAT(fill, HasSubstr("RANGE=NARROW"));
    EXPECT_THAT(fill, HasSubstr("a=mid:fill"));
    auto const key = sdp.substr(sdp.rfind("m=video"));
    for (auto const* part : {"sampling=YCbCr-4:2:2", "width=320", "height=180", "exactframerate=50", "RANGE=FULL",
                             "a=mid:key", "a=label:key", "a=x-quillo-alpha:straight"})
        EXPECT_THAT(key, HasSubstr(part));
}

TEST_F(alpha, bgra_is_described)
{
    auto const sender = play(SenderFourCC_UYVA);
    auto const receiver = watch("/bgra");
    ASSERT_TRUE(receiver->wait_for_picture());
    for (auto const* part :
         {"sampling=BGRA", "depth=8", "RANGE=FULL", "exactframerate=50", "a=x-quillo-alpha:straight"})
        EXPECT_THAT(receiver->sdp(), HasSubstr(part));
    EXPECT_THAT(receiver->sdp(), Not(HasSubstr("a=group")));
}

TEST_F(alpha, addresses_without_alpha_say_nothing_of_it)
{
    auto const sender = play(SenderFourCC_UYVA);
    auto const receiver = watch("/raw");
    ASSERT_TRUE(receiver->wait_for_picture());
    EXPECT_THAT(receiver->sdp(), Not(HasSubstr("alpha")));
}

TEST_F(alpha, key_comes_and_goes_without_a_new_connection)
{
    auto const sender = play(SenderFourCC_UYVA);
    auto const receiver = watch("/raw+key");
    auto const key = [](bool opaque) {
        return [opaque](rtsp_receiver::picture const& shown) {
            return shown.payload == key_payload && (shown.bytes[1] == 255 && shown.bytes[3] == 255) == opaque;
        };
    };
    ASSERT_TRUE(receiver->wait_for_picture(key(false)));
    sender->change_format(video_format(320, 180, SenderFourCC_UYVY, 50, 1));
    ASSERT_TRUE(receiver->wait_for_picture(key(true)));
    sender->change_format(video_format(320, 180, SenderFourCC_UYVA, 50, 1));
    ASSERT_TRUE(receiver->wait_for_picture(key(false)));
}

// Few pictures a second, so that sound could begin far from the first. Reports come for each stream apart, in the first
// seconds.
TEST_F(alpha, keys_stay_with_their_fills_when_reports_come)
{
    live_sender const sender{publisher_.socket(), "Alpha", 1, video_format(320, 180, SenderFourCC_UYVA, 6, 1), ramp};
    auto const receiver = watch("/raw+key");
    std::map<int, std::map<int, std::int64_t>> times; // by number and payload
    for (int k = 0; k < 2 * 6 * 6; ++k) {
        auto const got = receiver->wait_for_picture();
        ASSERT_TRUE(got);
        auto const number = got->bytes[got->payload == fill_payload ? 0 : 1];
        times[number][got->payload] = got->pts_ns;
    }
    for (auto const& [number, both] : times) {
        if (both.size() == 2) {
            EXPECT_LT(std::abs(both.at(fill_payload) - both.at(key_payload)), same_time_ns) << number;
        }
    }
}

TEST_F(alpha, paused_host_shows_its_key_to_somebody_who_comes_second)
{
    auto const sender = play(SenderFourCC_BGRA);
    auto const first = watch("/raw");
    ASSERT_TRUE(first->wait_for_picture());
    sender->pause(true);
    auto const second = watch("/raw+key");
    auto const pairs = receive_pairs(*second, 3);
    ASSERT_EQ(pairs.size(), 3u);
    for (auto const& both : pairs)
        EXPECT_EQ(both.key[3], static_cast<unsigned char>(both.key[1] + 1));
}

TEST_F(alpha, odd_width_loses_its_last_column_as_a_key)
{
    auto const sender = play(SenderFourCC_BGRA, 321);
    auto const receiver = watch("/raw+key");
    auto const pairs = receive_pairs(*receiver, 3);
    ASSERT_EQ(pairs.size(), 3u);
    for (auto const& [fill, key] : pairs) {
        ASSERT_EQ(key.size(), 320u * 180 * 2);
        // Row 1 begins with the alpha of pixel 321.
        EXPECT_EQ(key[320 * 2 + 1], static_cast<unsigned char>(key[1] + 321));
    }
    auto const joined = watch("/bgra");
    auto const picture = joined->wait_for_picture();
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 321);
}

TEST_F(alpha, viewers_share_one_conversion_and_are_told_apart)
{
    auto const sender = play(SenderFourCC_BGRA);
    auto const one = watch("/raw+key");
    auto const other = watch("/raw+key");
    auto const joined = watch("/bgra");
    EXPECT_EQ(receive_pairs(*one, 5).size(), 5u);
    EXPECT_EQ(receive_pairs(*other, 5).size(), 5u);
    ASSERT_TRUE(joined->wait_for_picture());
    std::multiset<std::string> mounts;
    auto const status = nlohmann::json::parse(publisher_.everything.status());
    for (auto const& receiver : status["sources"][0]["receivers"])
        mounts.insert(receiver["mount"]);
    EXPECT_EQ(mounts, (std::multiset<std::string>{"bgra", "raw+key", "raw+key"}));
    EXPECT_EQ(status["mounts"], (nlohmann::json{"", "/raw", "/raw+key", "/bgra"}));
}

TEST_F(alpha, end_of_the_sender_ends_its_viewers)
{
    auto sender = play(SenderFourCC_UYVA);
    auto const with_key = watch("/raw+key");
    auto const joined = watch("/bgra");
    ASSERT_TRUE(with_key->wait_for_picture());
    ASSERT_TRUE(joined->wait_for_picture());
    sender.reset();
    EXPECT_TRUE(with_key->wait_for_end());
    EXPECT_TRUE(joined->wait_for_end());
}

} // namespace
} // namespace quillo::testing
