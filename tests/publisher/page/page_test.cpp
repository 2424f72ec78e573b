// The page of a publisher with a source.
#include "publisher/page/page_server.h"
#include "tests/publisher/page/http_client.h"
#include "tests/support/live_sender.h"
#include "tests/support/rtsp_receiver.h"
#include "tests/support/running_publisher.h"
#include "tests/support/soon.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace quillo::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

auto const sd = video_format(320, 180, SenderFourCC_UYVY, 50, 1);

class page : public ::testing::Test
{
  protected:
    static publisher::http_settings any_port()
    {
        publisher::http_settings settings;
        settings.port = 0;
        return settings;
    }

    http_response get(std::string const& path) { return testing::get(page_.port(), path); }
    nlohmann::json status() { return nlohmann::json::parse(get("/status.json").body); }

    running_publisher publisher_;
    publisher::page_server page_{any_port(), publisher_.everything};
};

TEST_F(page, has_what_a_browser_needs_and_nothing_from_elsewhere)
{
    auto const html = get("/");
    EXPECT_EQ(html.status, 200);
    EXPECT_EQ(html.headers.at("content-type"), "text/html; charset=utf-8");
    EXPECT_THAT(html.headers.at("content-security-policy"), HasSubstr("default-src 'none'"));
    for (char const* const path : {"/page.css", "/page.js", "/icon.svg"}) {
        EXPECT_THAT(html.body, HasSubstr(path + 1));
        auto const file = get(path);
        EXPECT_EQ(file.status, 200) << path;
        EXPECT_EQ(file.body.find("://"), file.body.find("://www.w3.org/")) << path << " points elsewhere";
    }
    EXPECT_EQ(html.body.find("://"), std::string::npos);
}

TEST_F(page, status_is_what_the_local_socket_says)
{
    live_sender const sender{publisher_.socket(), "Adobe Premiere Pro", 1, sd, noise_picture};
    ASSERT_TRUE(soon([&] { return !status()["sources"].empty() && status()["sources"][0]["format"].is_object(); }));
    auto const seen = status();
    EXPECT_EQ(seen, nlohmann::json::parse(publisher_.everything.status()));
    EXPECT_EQ(seen["version"], QUILLO_VERSION);
    EXPECT_EQ(seen["urls"]["page"], page_.url());
    EXPECT_EQ(seen["urls"]["rtsp"], publisher_.url(""));
    auto const& source = seen["sources"][0];
    EXPECT_EQ(source["path"], "/adobe-premiere-pro");
    EXPECT_EQ(source["format"]["color"], "BT.709, limited range");
    EXPECT_EQ(source["format"]["alpha"], false);
    EXPECT_EQ(source["losses"]["encoder_late"], 0);
    EXPECT_EQ(source["losses"]["encoder_late_sound"], 0);
    EXPECT_EQ(source["losses"]["audio_displaced"], 0);
}

TEST_F(page, sources_come_and_go)
{
    EXPECT_THAT(status()["sources"], IsEmpty());
    {
        live_sender const sender{publisher_.socket(), "Adobe Premiere Pro", 1, sd, noise_picture};
        EXPECT_TRUE(soon([&] { return status()["sources"].size() == 1; }));
    }
    EXPECT_TRUE(soon([&] { return status()["sources"].empty(); }));
}

TEST_F(page, what_receivers_got_and_lost_stays_counted)
{
    live_sender const sender{publisher_.socket(), "Adobe Premiere Pro", 1, sd, noise_picture};
    {
        rtsp_receiver receiver{publisher_.url("/adobe-premiere-pro/raw"), rtsp_receiver::over::tcp,
                               rtsp_receiver::decode::raw};
        receiver.start();
        for (int k = 0; k < 5; ++k)
            ASSERT_TRUE(receiver.wait_for_picture());
        auto const source = status()["sources"][0];
        EXPECT_GE(source["frames_sent"], 5);
        EXPECT_TRUE(source["hand_over_ms"].is_number());
        EXPECT_LT(std::abs(source["av_offset_ms"].get<double>()), 100);
    }
    ASSERT_TRUE(soon([&] { return status()["sources"][0]["receivers"].empty(); }));
    EXPECT_GE(status()["sources"][0]["frames_sent"], 5);
    EXPECT_TRUE(status()["sources"][0]["av_offset_ms"].is_null());
}

TEST_F(page, metrics_and_health)
{
    live_sender const sender{publisher_.socket(), "Adobe Premiere Pro", 1, sd, noise_picture};
    ASSERT_TRUE(soon([&] { return status()["sources"].size() == 1; }));
    auto const metrics = get("/metrics");
    EXPECT_THAT(metrics.headers.at("content-type"), HasSubstr("version=0.0.4"));
    EXPECT_THAT(metrics.body, HasSubstr("quillo_build_info{version=\"" QUILLO_VERSION "\"} 1\n"));
    EXPECT_THAT(metrics.body, HasSubstr("quillo_sources 1\n"));
    EXPECT_THAT(metrics.body, HasSubstr("name=\"Adobe Premiere Pro\""));
    EXPECT_EQ(get("/healthz").body, "ok\n");
}

// The parts of a multipart answer, as a browser takes them.
struct jpeg_stream
{
    jpeg_stream(int port, std::string const& path, int receive_buffer = 0) : client{port, "127.0.0.1", receive_buffer}
    {
        client.send("GET " + path + " HTTP/1.1\r\nHost: localhost\r\nUser-Agent: test\r\n\r\n");
    }

    // Header of the answer or of a part, up to the empty line.
    std::string head()
    {
        std::string text;
        while (!text.ends_with("\r\n\r\n")) {
            std::string const byte = client.receive(1);
            if (byte.empty())
                return {};
            text += byte;
        }
        return text;
    }

    std::string picture()
    {
        std::string const part = head();
        std::size_t const at = part.find("Content-Length: ");
        if (at == std::string::npos)
            return {};
        std::size_t const size = std::stoul(part.substr(at + 16));
        std::string const bytes = client.receive(size);
        client.receive(2 + std::string_view{"--picture\r\n"}.size());
        return bytes;
    }

    http_client client;
};

bool is_jpeg(std::string const& bytes) { return bytes.starts_with("\xFF\xD8\xFF") && bytes.ends_with("\xFF\xD9"); }

TEST_F(page, live_pictures_come_one_after_the_other)
{
    live_sender const sender{publisher_.socket(), "Adobe Premiere Pro", 1, sd, noise_picture};
    ASSERT_TRUE(soon([&] { return status()["sources"].size() == 1; }));
    jpeg_stream stream{page_.port(), "/live/adobe-premiere-pro.mjpeg"};
    EXPECT_THAT(stream.head(), HasSubstr("multipart/x-mixed-replace; boundary=picture"));
    stream.client.receive(std::string_view{"--picture\r\n"}.size());
    std::string before;
    for (int k = 0; k < 10; ++k) {
        std::string const picture = stream.picture();
        ASSERT_TRUE(is_jpeg(picture));
        EXPECT_NE(picture, before);
        before = picture;
    }
    auto const source = status()["sources"][0];
    ASSERT_EQ(source["receivers"].size(), 1u);
    EXPECT_EQ(source["receivers"][0]["mount"], "mjpeg");
    EXPECT_EQ(source["receivers"][0]["address"], "127.0.0.1");
    EXPECT_EQ(source["receivers"][0]["agent"], "test");
    EXPECT_GE(source["receivers"][0]["frames_sent"], 10);
}

TEST_F(page, nothing_runs_while_nobody_looks)
{
    live_sender const sender{publisher_.socket(), "Adobe Premiere Pro", 1, sd, noise_picture};
    ASSERT_TRUE(soon([&] { return status()["sources"].size() == 1; }));
    EXPECT_FALSE(sender.wanted());
    {
        jpeg_stream stream{page_.port(), "/live/adobe-premiere-pro.mjpeg"};
        stream.head();
        EXPECT_TRUE(soon([&] { return sender.wanted(); }));
    }
    EXPECT_TRUE(soon([&] { return !sender.wanted(); }));
    EXPECT_TRUE(soon([&] { return status()["sources"][0]["receivers"].empty(); }));
}

TEST_F(page, a_still_picture_is_one)
{
    live_sender const sender{publisher_.socket(), "Adobe Premiere Pro", 1, sd, noise_picture};
    ASSERT_TRUE(soon([&] { return status()["sources"].size() == 1; }));
    auto const still = get("/live/adobe-premiere-pro.jpg");
    EXPECT_EQ(still.headers.at("content-type"), "image/jpeg");
    EXPECT_TRUE(is_jpeg(still.body));
    EXPECT_EQ(get("/live/somebody-else.jpg").status, 404);
    EXPECT_EQ(get("/live/adobe-premiere-pro").status, 404);
    EXPECT_EQ(get("/live/adobe-premiere-pro.png").status, 404);
    EXPECT_EQ(get("/live/").status, 404);
}

TEST_F(page, pictures_end_with_their_source)
{
    auto sender = std::make_unique<live_sender>(publisher_.socket(), "Adobe Premiere Pro", 1, sd, noise_picture);
    ASSERT_TRUE(soon([&] { return status()["sources"].size() == 1; }));
    jpeg_stream stream{page_.port(), "/live/adobe-premiere-pro.mjpeg"};
    stream.head();
    sender.reset();
    stream.client.receive();
    EXPECT_TRUE(stream.client.closes_silently());
}

// Who stops reading loses pictures, and then the connection; the others lose nothing.
TEST_F(page, a_browser_that_stops_reading_harms_nobody)
{
    live_sender const sender{publisher_.socket(), "Adobe Premiere Pro", 1, sd, noise_picture};
    ASSERT_TRUE(soon([&] { return status()["sources"].size() == 1; }));
    jpeg_stream stopped{page_.port(), "/live/adobe-premiere-pro.mjpeg", 4096};
    stopped.head();
    auto const of = [&](char const* what) {
        std::uint64_t most = 0;
        auto const now = status();
        for (auto const& who : now["sources"][0]["receivers"])
            most = std::max(most, who[what].get<std::uint64_t>());
        return most;
    };
    ASSERT_TRUE(soon([&] { return of("frames_dropped") > 0; }));
    jpeg_stream reading{page_.port(), "/live/adobe-premiere-pro.mjpeg"};
    reading.head();
    reading.client.receive(std::string_view{"--picture\r\n"}.size());
    for (int k = 0; k < 20; ++k)
        ASSERT_TRUE(is_jpeg(reading.picture()));
    EXPECT_TRUE(soon([&] { return of("frames_dropped") > 10; }));
}

} // namespace
} // namespace quillo::testing
