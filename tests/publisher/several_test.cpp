// Several hosts, and several instances of one, behind one publisher and one port.
#include "tests/support/live_sender.h"
#include "tests/support/rtsp_receiver.h"
#include "tests/support/running_publisher.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>

namespace quillo::testing {
namespace {

using bytes = std::vector<unsigned char>;

auto const format = video_format(160, 90, SenderFourCC_UYVY, 50, 1);

class several : public ::testing::Test
{
  protected:
    std::unique_ptr<live_sender> play(std::string const& name, std::uint8_t id, unsigned char luma)
    {
        return std::make_unique<live_sender>(publisher_.socket(), name, id, format, of_luma(luma));
    }
    std::unique_ptr<rtsp_receiver> watch(std::string const& path)
    {
        bool const raw = path.ends_with("/raw");
        auto made = std::make_unique<rtsp_receiver>(publisher_.url(path), rtsp_receiver::over::tcp,
                                                    raw ? rtsp_receiver::decode::raw : rtsp_receiver::decode::h264);
        made->start();
        return made;
    }
    static bool shows(rtsp_receiver& receiver, unsigned char luma)
    {
        return receiver
            .wait_for_picture([luma](rtsp_receiver::picture const& shown) {
                auto const& b = shown.bytes;
                return std::abs(b[shown.format == "UYVY" ? 1 : b.size() / 3] - luma) <= 3;
            })
            .has_value();
    }
    std::vector<std::string> paths()
    {
        std::vector<std::string> all;
        auto const status = nlohmann::json::parse(publisher_.everything.status());
        for (auto const& source : status["sources"])
            all.push_back(source["path"]);
        return all;
    }
    bool wait_for_sources(std::size_t count)
    {
        auto const until = std::chrono::steady_clock::now() + 5s;
        while (paths().size() != count && std::chrono::steady_clock::now() < until)
            std::this_thread::sleep_for(5ms);
        return paths().size() == count;
    }

    running_publisher publisher_;
};

TEST_F(several, hosts_and_instances_are_watched_at_once_through_one_port)
{
    auto const first = play("Adobe Premiere Pro", 1, 60);
    auto const second = play("Adobe Premiere Pro", 2, 120);
    auto const other = play("Adobe After Effects", 3, 180);
    EXPECT_EQ(paths(),
              (std::vector<std::string>{"/adobe-premiere-pro", "/adobe-premiere-pro-2", "/adobe-after-effects"}));
    std::map<std::string, std::pair<unsigned char, std::unique_ptr<rtsp_receiver>>> watching;
    for (auto const& [path, luma] : std::map<std::string, unsigned char>{
             {"/adobe-premiere-pro", 60}, {"/adobe-premiere-pro-2", 120}, {"/adobe-after-effects", 180}})
        for (auto const* mount : {"", "/raw"})
            watching[path + mount] = {luma, watch(path + mount)};
    for (auto const& [path, what] : watching)
        EXPECT_TRUE(shows(*what.second, what.first)) << path;
    EXPECT_TRUE(first->wanted() && second->wanted() && other->wanted());
}

TEST_F(several, source_that_comes_back_as_another_process_keeps_its_address)
{
    auto first = play("Adobe Premiere Pro", 1, 60);
    auto const other = play("Adobe After Effects", 3, 180);
    auto const staying = watch("/adobe-after-effects/raw");
    ASSERT_TRUE(shows(*staying, 180));
    for (std::uint8_t id = 10; id < 13; ++id) {
        first.reset();
        ASSERT_TRUE(wait_for_sources(1));
        first = play("Adobe Premiere Pro", id, static_cast<unsigned char>(5 * id));
        ASSERT_TRUE(wait_for_sources(2));
        auto const again = watch("/adobe-premiere-pro/raw");
        EXPECT_TRUE(shows(*again, static_cast<unsigned char>(5 * id))) << int{id};
    }
    EXPECT_FALSE(staying->wait_for_end(0ms));
    EXPECT_TRUE(shows(*staying, 180));
}

TEST_F(several, one_that_comes_back_does_not_take_the_address_of_its_twin)
{
    auto first = play("Adobe Premiere Pro", 1, 60);
    auto const twin = play("Adobe Premiere Pro", 2, 120);
    first.reset();
    ASSERT_TRUE(wait_for_sources(1));
    first = play("Adobe Premiere Pro", 3, 90);
    ASSERT_TRUE(wait_for_sources(2));
    auto const of_first = watch("/adobe-premiere-pro/raw");
    auto const of_twin = watch("/adobe-premiere-pro-2/raw");
    EXPECT_TRUE(shows(*of_first, 90));
    EXPECT_TRUE(shows(*of_twin, 120));
}

} // namespace
} // namespace quillo::testing
