#include "publisher/page/metrics.h"

#include <gmock/gmock.h>

#include <map>
#include <regex>
#include <sstream>

namespace quillo::publisher {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

nlohmann::json const status = {{"version", "1.2.3"},
                               {"turned_away", {{"strangers", 3}, {"wrong_password", 0}}},
                               {"sources",
                                {{{"name", "Line\nbreak \"and\" back\\slash"},
                                  {"id", "00ff"},
                                  {"path", "/first"},
                                  {"away", true},
                                  {"format", {{"width", 1280}, {"height", 720}, {"rate", {30000, 1001}}}},
                                  {"receivers", {{{"mount", "raw"}}, {{"mount", "raw"}}, {{"mount", "default"}}}},
                                  {"frames_in", 12345678901},
                                  {"blocks_in", 7},
                                  {"anchors", 2},
                                  {"sound_breaks", 13},
                                  {"frames_sent", 99},
                                  {"hand_over_ms", 1.5},
                                  {"av_offset_ms", -20},
                                  {"losses",
                                   {{"video_no_slot", 1},
                                    {"video_replaced", 2},
                                    {"video_refused", 3},
                                    {"audio_no_room", 4},
                                    {"audio_refused", 5},
                                    {"video_late", 6},
                                    {"audio_late", 8},
                                    {"encoder_late", 9},
                                    {"encoder_late_sound", 11},
                                    {"audio_displaced", 12},
                                    {"receiver_late_sound", 14},
                                    {"receiver_late", 10}}}},
                                 {{"name", "Second"},
                                  {"id", "01"},
                                  {"path", "/second"},
                                  {"away", false},
                                  {"format", nullptr},
                                  {"receivers", nlohmann::json::array()},
                                  {"frames_in", 0},
                                  {"blocks_in", 0},
                                  {"anchors", 0},
                                  {"sound_breaks", 0},
                                  {"frames_sent", 0},
                                  {"hand_over_ms", nullptr},
                                  {"av_offset_ms", nullptr},
                                  {"losses", nlohmann::json::object()}}}}};

TEST(metrics, say_what_the_status_says)
{
    std::string const text = metrics_text(status);
    for (char const* const line : {"quillo_build_info{version=\"1.2.3\"} 1\n",
                                   "quillo_sources 2\n",
                                   "quillo_connections_refused_total{cause=\"strangers\"} 3\n",
                                   "quillo_connections_refused_total{cause=\"wrong_password\"} 0\n",
                                   "quillo_source_away{source=\"/first\"} 1\n",
                                   "quillo_source_away{source=\"/second\"} 0\n",
                                   "quillo_video_frames_total{source=\"/first\"} 12345678901\n",
                                   "quillo_video_width_pixels{source=\"/first\"} 1280\n",
                                   "quillo_video_frames_per_second{source=\"/first\"} 29.97002997\n",
                                   "quillo_receivers{source=\"/first\",mount=\"raw\"} 2\n",
                                   "quillo_receivers{source=\"/first\",mount=\"default\"} 1\n",
                                   "quillo_video_lost_frames_total{source=\"/first\",cause=\"publisher_late\"} 1\n",
                                   "quillo_video_lost_frames_total{source=\"/first\",cause=\"encoder_late\"} 9\n",
                                   "quillo_video_lost_frames_total{source=\"/first\",cause=\"receiver_late\"} 10\n",
                                   "quillo_audio_lost_blocks_total{source=\"/first\",cause=\"publisher_late\"} 4\n",
                                   "quillo_audio_lost_blocks_total{source=\"/first\",cause=\"encoder_late\"} 11\n",
                                   "quillo_audio_lost_blocks_total{source=\"/first\",cause=\"receiver_late\"} 14\n",
                                   "quillo_audio_lost_blocks_total{source=\"/first\",cause=\"displaced\"} 12\n",
                                   "quillo_audio_breaks_total{source=\"/first\"} 13\n",
                                   "quillo_host_late_total{source=\"/first\",stream=\"video\"} 6\n",
                                   "quillo_hand_over_seconds{source=\"/first\"} 0.0015\n",
                                   "quillo_av_offset_seconds{source=\"/first\"} -0.02\n"})
        EXPECT_THAT(text, HasSubstr(line));
    EXPECT_THAT(text, Not(HasSubstr("quillo_video_width_pixels{source=\"/second\"}")));
    EXPECT_THAT(text, Not(HasSubstr("quillo_hand_over_seconds{source=\"/second\"}")));
}

TEST(metrics, labels_are_escaped)
{
    EXPECT_THAT(metrics_text(status), HasSubstr(R"(name="Line\nbreak \"and\" back\\slash")"));
}

// The text format: every sample of a family stands under its HELP and TYPE, once, counters end in _total, and nothing
// else stands anywhere.
TEST(metrics, keep_the_formats_grammar)
{
    std::regex const sample{
        R"(([a-z_]+)(\{[a-z]+="([^"\\\n]|\\["\\n])*"(,[a-z]+="([^"\\\n]|\\["\\n])*")*\})? -?[0-9.e+-]+)"};
    std::istringstream lines{metrics_text(status)};
    std::string line, current, described;
    std::map<std::string, std::string> types;
    while (std::getline(lines, line)) {
        std::istringstream words{line};
        std::string hash, what, name, type;
        words >> hash >> what >> name >> type;
        std::smatch parts;
        if (what == "HELP") {
            described = name;
        } else if (what == "TYPE") {
            EXPECT_EQ(name, described);
            EXPECT_TRUE(types.emplace(name, type).second) << name << " twice";
            EXPECT_EQ(type == "counter", name.ends_with("_total")) << name;
            EXPECT_TRUE(type == "counter" || type == "gauge") << line;
            current = name;
        } else {
            ASSERT_TRUE(std::regex_match(line, parts, sample)) << line;
            EXPECT_EQ(parts[1], current);
        }
    }
    EXPECT_GT(types.size(), 10u);
}

} // namespace
} // namespace quillo::publisher
