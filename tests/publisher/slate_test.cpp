// What viewers see while the sender of their source is away.
#include "tests/support/live_sender.h"
#include "tests/support/rtsp_receiver.h"
#include "tests/support/rtsp_socket.h"
#include "tests/support/running_publisher.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>

namespace quillo::testing {
namespace {

using bytes = std::vector<unsigned char>;
using clock = std::chrono::steady_clock;

constexpr char const* name = "Adobe Premiere Pro";
constexpr char const* path = "/adobe-premiere-pro";
auto const format = video_format(160, 90, SenderFourCC_UYVY, 50, 1);

constexpr int dark(int luma) { return 16 + (luma - 16) / 4; }
constexpr int no_colour = 128;
constexpr unsigned char some_chroma = 90;

class slate : public ::testing::Test
{
  protected:
    static publisher::publisher_settings settings(std::chrono::seconds time)
    {
        auto made = running_publisher::settings({});
        made.slate = time;
        return made;
    }

    void begin(std::chrono::seconds time)
    {
        publisher_.emplace(settings(time));
        play(1, 200);
    }
    void play(std::uint8_t id, unsigned char luma, protocol::video_format_body const& shape = format)
    {
        host_ = std::make_unique<live_sender>(publisher_->socket(), name, id, shape, of_luma(luma, some_chroma));
    }
    std::unique_ptr<rtsp_receiver> watch(std::string const& mount = {})
    {
        auto made =
            std::make_unique<rtsp_receiver>(publisher_->url(path + mount), rtsp_receiver::over::tcp,
                                            mount.empty() ? rtsp_receiver::decode::h264 : rtsp_receiver::decode::raw);
        made->start();
        return made;
    }
    static bool shows(rtsp_receiver& receiver, int luma, int chroma, int width = 160)
    {
        return receiver
            .wait_for_picture([=](rtsp_receiver::picture const& shown) {
                auto const& b = shown.bytes;
                auto const luma_at = shown.format == "UYVY" ? 1 : b.size() / 3;
                auto const chroma_at = shown.format == "UYVY" ? 0 : b.size() - 1;
                return shown.width == width && std::abs(b[luma_at] - luma) <= 3 && std::abs(b[chroma_at] - chroma) <= 3;
            })
            .has_value();
    }
    nlohmann::json sources() const { return nlohmann::json::parse(publisher_->everything.status())["sources"]; }
    bool wait_for(std::function<bool(nlohmann::json const&)> const& fits, std::chrono::milliseconds limit = 5s) const
    {
        for (auto const until = clock::now() + limit; clock::now() < until; std::this_thread::sleep_for(5ms))
            if (fits(sources()))
                return true;
        return false;
    }
    bool wait_until_away() const
    {
        return wait_for([](auto const& all) { return all.size() == 1 && all[0]["away"] == true; });
    }
    bool refused(std::string const& mount) const
    {
        rtsp_socket asking{publisher_->everything.port()};
        return asking.ask("DESCRIBE", publisher_->url(path + mount)).find(" 404 ") != std::string::npos;
    }

    std::optional<running_publisher> publisher_;
    std::unique_ptr<live_sender> host_;
};

TEST_F(slate, keeps_viewers_until_the_source_is_back)
{
    begin(60s);
    auto const staying = watch();
    ASSERT_TRUE(shows(*staying, 200, some_chroma));

    host_.reset();
    EXPECT_TRUE(shows(*staying, dark(200), no_colour));
    ASSERT_TRUE(wait_until_away());
    EXPECT_EQ(sources()[0]["format"]["width"], 160);
    EXPECT_EQ(sources()[0]["receivers"].size(), 1u);
    // Again and again: a receiver is not left without pictures.
    auto const seen = staying->pictures();
    std::this_thread::sleep_for(1s);
    EXPECT_GE(staying->pictures(), seen + 4);

    for (std::uint8_t const id : {1, 7}) { // the same again, and another process
        auto const luma = static_cast<unsigned char>(100 + 10 * id);
        play(id, luma);
        EXPECT_TRUE(shows(*staying, luma, some_chroma)) << int{id};
        EXPECT_EQ(sources()[0]["away"], false);
        EXPECT_EQ(sources()[0]["path"], path);
        host_.reset();
        EXPECT_TRUE(shows(*staying, dark(luma), no_colour)) << int{id};
    }
    EXPECT_EQ(sources().size(), 1u);
    EXPECT_FALSE(staying->wait_for_end(0ms));
}

TEST_F(slate, sender_that_is_back_before_it_is_missed_takes_its_own_place)
{
    begin(60s);
    auto const staying = watch();
    ASSERT_TRUE(shows(*staying, 200, some_chroma));
    auto const before = std::move(host_);
    play(1, 100);
    EXPECT_TRUE(shows(*staying, 100, some_chroma));
    ASSERT_TRUE(staying->wait_for_picture());
    for (auto const until = clock::now() + 300ms; clock::now() < until;)
        EXPECT_TRUE(
            staying->wait_for_picture([](auto const& shown) { return shown.bytes[shown.bytes.size() / 3] < 110; }));
    EXPECT_EQ(sources().size(), 1u);
    EXPECT_FALSE(staying->wait_for_end(0ms));
}

TEST_F(slate, is_silent)
{
    begin(60s);
    auto const staying = watch();
    ASSERT_FALSE(staying->wait_for_sound(48000 * 2).empty());
    host_.reset();
    ASSERT_TRUE(wait_until_away());
    std::this_thread::sleep_for(500ms); // what was on its way
    staying->wait_for_sound(0);
    auto const heard = staying->wait_for_sound(48000 * 2 * 2 / 2); // half a second
    ASSERT_GE(heard.size(), 48000u);
    int loudest = 0;
    for (std::size_t k = 0; k + 2 <= heard.size(); k += 2) {
        std::int16_t sample = 0;
        std::memcpy(&sample, &heard[k], sizeof sample);
        loudest = std::max(loudest, std::abs(int{sample}));
    }
    EXPECT_LE(loudest, 8);
    play(1, 100);
    std::this_thread::sleep_for(500ms);
    staying->wait_for_sound(0);
    auto const again = staying->wait_for_sound(48000);
    EXPECT_TRUE(std::any_of(again.begin(), again.end(), [](unsigned char byte) { return byte > 30 && byte < 220; }));
}

TEST_F(slate, ends_when_its_time_is_over)
{
    begin(1s);
    auto const staying = watch();
    ASSERT_TRUE(shows(*staying, 200, some_chroma));
    host_.reset();
    ASSERT_TRUE(wait_until_away());
    EXPECT_FALSE(staying->wait_for_end(500ms));
    EXPECT_TRUE(staying->wait_for_end(3s));
    EXPECT_TRUE(wait_for([](auto const& all) { return all.empty(); }));
    EXPECT_TRUE(refused(""));
}

TEST_F(slate, is_off_by_itself)
{
    EXPECT_EQ(running_publisher::settings({}).slate, 0s);
    begin(0s);
    auto const viewer = watch();
    ASSERT_TRUE(shows(*viewer, 200, some_chroma));
    host_.reset();
    EXPECT_TRUE(viewer->wait_for_end(2s));
    EXPECT_TRUE(sources().empty());
}

TEST_F(slate, is_not_for_uncompressed_viewers)
{
    begin(60s);
    auto const viewer = watch("/raw");
    ASSERT_TRUE(shows(*viewer, 200, some_chroma));
    host_.reset();
    EXPECT_TRUE(viewer->wait_for_end(2s));
    ASSERT_TRUE(wait_until_away());
    EXPECT_TRUE(refused("/raw"));
    play(1, 100);
    EXPECT_TRUE(shows(*watch("/raw"), 100, some_chroma));
}

TEST_F(slate, is_black_for_those_who_come_meanwhile_and_gives_way_to_another_size)
{
    begin(60s);
    host_.reset();
    ASSERT_TRUE(wait_until_away());
    auto const late = watch();
    EXPECT_TRUE(shows(*late, 16, no_colour));
    play(2, 150, video_format(320, 180, SenderFourCC_UYVY, 25, 1));
    EXPECT_TRUE(shows(*late, 150, some_chroma, 320));
    EXPECT_FALSE(late->wait_for_end(0ms));
}

TEST_F(slate, twins_come_back_to_their_own_addresses)
{
    begin(60s);
    live_sender const twin{publisher_->socket(), name, 2, format, of_luma(60, some_chroma)};
    host_.reset();
    ASSERT_TRUE(wait_for([](auto const& all) { return all.size() == 2 && all[0]["away"] == true; }));
    play(3, 150);
    ASSERT_TRUE(wait_for([](auto const& all) { return all.size() == 2 && all[0]["away"] == false; }));
    EXPECT_EQ(sources()[0]["path"], path);
    EXPECT_EQ(sources()[1]["path"], std::string{path} + "-2");
}

} // namespace
} // namespace quillo::testing
