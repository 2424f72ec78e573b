// What a line of the log looks like, and how often it is written.
#include "publisher/log_limit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace quillo::log {
namespace {

using namespace std::chrono_literals;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

template <class F>
std::vector<std::string> lines_of(F f)
{
    ::testing::internal::CaptureStderr();
    f();
    std::istringstream all{::testing::internal::GetCapturedStderr()};
    std::vector<std::string> lines;
    for (std::string line; std::getline(all, line);)
        lines.push_back(line);
    return lines;
}

class log_lines : public ::testing::Test
{
  protected:
    ~log_lines() override
    {
        set_level(level::info);
        set_json(false);
    }
};

TEST_F(log_lines, there_are_five_levels)
{
    for (auto const& [name, is] : {std::pair{"error", level::error},
                                   {"warning", level::warning},
                                   {"notice", level::notice},
                                   {"info", level::info},
                                   {"debug", level::debug}})
        EXPECT_EQ(parse_level(name), is);
    EXPECT_FALSE(parse_level("trace"));
    EXPECT_FALSE(parse_level(""));
}

TEST_F(log_lines, only_those_up_to_the_level_are_written)
{
    set_level(level::notice);
    auto const lines = lines_of([] {
        error("one");
        warning("two ", 2);
        notice(std::string{"three"});
        info("four");
        debug("five");
    });
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_THAT(lines[0], ContainsRegex("^[0-9:]+\\.[0-9]{3} quillo error: one$"));
    EXPECT_THAT(lines[1], HasSubstr("warning: two 2"));
    EXPECT_THAT(lines[2], HasSubstr("notice: three"));
}

TEST_F(log_lines, json_lines_carry_everything)
{
    set_json(true);
    auto const lines = lines_of([] { warning("a \"quoted\"\nname ", '\xff'); });
    int const here = __LINE__ - 1;
    ASSERT_EQ(lines.size(), 1u);
    auto const line = nlohmann::json::parse(lines[0]);
    EXPECT_EQ(line["level"], "warning");
    EXPECT_EQ(line["message"], "a \"quoted\"\nname \xEF\xBF\xBD");
    EXPECT_EQ(line["at"], "log_test.cpp:" + std::to_string(here));
    EXPECT_THAT(line["time"].get<std::string>(), ContainsRegex("^[0-9]{4}-[0-9-]{5}T[0-9:]{8}\\.[0-9]{3}Z$"));
}

TEST_F(log_lines, what_comes_from_outside_cannot_make_lines_of_its_own)
{
    auto const lines = lines_of([] { info("agent \n12:00:00.000 quillo error: \x1b[31mforged"); });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_THAT(lines[0], HasSubstr("agent ?12:00"));
}

TEST_F(log_lines, one_place_speaks_ten_times_and_others_go_on)
{
    auto const lines = lines_of([] {
        for (int k = 0; k < 50; ++k)
            info("the same again ", k);
        info("another");
    });
    ASSERT_EQ(lines.size(), 11u);
    EXPECT_THAT(lines[9], HasSubstr("again 9"));
    EXPECT_THAT(lines[10], HasSubstr("another"));
    EXPECT_THAT(lines_of(flush),
                ::testing::ElementsAre(HasSubstr("info: suppressed 40 lines, the last: the same again 49")));
    EXPECT_THAT(lines_of(flush), IsEmpty());
}

TEST(log_limit, silence_ends_with_its_time_and_is_told)
{
    limit places;
    limit::place const here{"file", 1};
    auto const start = limit::steady::time_point{} + 1h;
    for (int k = 0; k < limit::lines; ++k)
        EXPECT_TRUE(places.allows(here, level::info, "x", start));
    EXPECT_FALSE(places.allows(here, level::info, "x", start + 9s));
    EXPECT_FALSE(places.allows(here, level::warning, "y", start + 9s));
    EXPECT_THAT(places.take_silenced(start + 9s), IsEmpty());
    auto const told = places.take_silenced(start + 10s);
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].lines, 2u);
    EXPECT_EQ(told[0].last, "y");
    EXPECT_EQ(told[0].of_lines, level::warning);
    EXPECT_TRUE(places.allows(here, level::info, "x", start + 10s));
    EXPECT_THAT(places.take_silenced(start + 30s), IsEmpty());
}

TEST(log_limit, slow_talkers_are_never_cut_short)
{
    limit places;
    auto now = limit::steady::time_point{} + 1h;
    for (int k = 0; k < 1000; ++k, now += 1100ms)
        ASSERT_TRUE(places.allows({"file", 1}, level::info, "x", now)) << k;
}

} // namespace
} // namespace quillo::log
