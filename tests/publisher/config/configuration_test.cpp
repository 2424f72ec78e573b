// What a configuration file may say, and what the publisher says about one that is wrong.
#include "publisher/config/configuration.h"
#include "publisher/config/options.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <regex>

namespace quillo::publisher {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::vector<std::string> complaints(std::string const& text)
{
    std::vector<file_problem> problems;
    configuration_from(text, "/folder", problems);
    std::vector<std::string> lines;
    for (auto const& one : problems)
        lines.push_back(std::to_string(one.line) + ": " + one.text);
    return lines;
}

configuration good(std::string const& text)
{
    std::vector<file_problem> problems;
    auto const result = configuration_from(text, "/folder", problems);
    EXPECT_TRUE(problems.empty()) << problems.front().text;
    return result;
}

TEST(configuration, nothing_said_means_the_defaults)
{
    for (char const* const text : {"", "\n\n", "# nothing\n", "[network]\n[log]\n"})
        EXPECT_EQ(good(text), configuration{}) << text;
}

TEST(configuration, everything_that_is_said_is_taken)
{
    auto const all = good("[network]\naddress = 192.168.1.5\nport = 9000\nallow = private, 203.0.113.0/24\n"
                          "announce = false\n"
                          "[access]\nuser = anna\npassword = not so  secret\n"
                          "[tls]\nenabled = true\nport = 9001\ncertificate = mine.pem\nkey = /etc/keys/mine.pem\n"
                          "[limits]\nraw-viewers = 1\nencoded-viewers = 2\nconnections = 3\n"
                          "connections-per-address = 4\nrequest-size = 5000\nrequest-time = 6\n"
                          "[sources]\nslate = 90\n"
                          "[page]\nenabled = false\naddress = ::1\nport = 8081\n"
                          "[video]\nencoder = x264enc\n"
                          "[process]\nnice = 7\n"
                          "[log]\nlevel = notice\njson = true\n");
    EXPECT_EQ(all.address, "192.168.1.5");
    EXPECT_EQ(all.port, 9000);
    EXPECT_TRUE(all.allow.allow("203.0.113.9"));
    EXPECT_FALSE(all.allow.allow("127.0.0.1"));
    EXPECT_FALSE(all.announce);
    EXPECT_EQ(all.user, "anna");
    EXPECT_EQ(all.password, "not so  secret");
    EXPECT_TRUE(all.tls);
    EXPECT_EQ(all.tls_port, 9001);
    EXPECT_EQ(all.certificate, "/folder/mine.pem");
    EXPECT_EQ(all.key, "/etc/keys/mine.pem");
    EXPECT_EQ(all.raw_viewers, 1);
    EXPECT_EQ(all.encoded_viewers, 2);
    EXPECT_EQ(all.connections, 3);
    EXPECT_EQ(all.connections_per_address, 4);
    EXPECT_EQ(all.request_size, 5000);
    EXPECT_EQ(all.request_time, std::chrono::seconds{6});
    EXPECT_EQ(all.slate, std::chrono::seconds{90});
    EXPECT_FALSE(all.page);
    EXPECT_EQ(all.page_address, "::1");
    EXPECT_EQ(all.page_port, 8081);
    EXPECT_EQ(all.encoder, "x264enc");
    EXPECT_EQ(all.nice, 7);
    EXPECT_EQ(all.log_level, log::level::notice);
    EXPECT_TRUE(all.log_json);
}

TEST(configuration, unknown_words_are_mistakes_and_the_right_one_is_named)
{
    EXPECT_THAT(complaints("# line 1\n[network]\nprot = 8554\n"),
                ElementsAre("3: there is no key \"prot\" in [network]: did you mean port?"));
    EXPECT_THAT(complaints("[acess]\nuser = anna\n"),
                ElementsAre("1: there is no group [acess]: did you mean access?"));
    EXPECT_THAT(complaints("[log]\ncolour = red\n"),
                ElementsAre("2: there is no key \"colour\" in [log]: there are json, level"));
}

TEST(configuration, values_out_of_range_are_told_with_what_is_allowed)
{
    EXPECT_THAT(complaints("[network]\nport = 65536\n"), ElementsAre("2: port = \"65536\" is not allowed: 0 to 65535"));
    EXPECT_THAT(complaints("[limits]\n\nrequest-size=a lot\n"),
                ElementsAre("3: request-size = \"a lot\" is not allowed: 1024 to 1048576"));
    EXPECT_THAT(complaints("[tls]\nenabled = yes\n"),
                ElementsAre("2: enabled = \"yes\" is not allowed: true or false"));
    EXPECT_THAT(complaints("[log]\nlevel = loud\n"),
                ElementsAre("2: level = \"loud\" is not allowed: error, warning, notice, info, debug"));
    EXPECT_THAT(complaints("[network]\naddress = here\nallow = 10.0.0.0/33\n"),
                ElementsAre(HasSubstr("2: address"), HasSubstr("3: allow")));
    for (char const* const number : {"", "-1", "0x10", "1e3", "99999999999999999999", "8554 8555"})
        EXPECT_THAT(complaints(std::string{"[network]\nport = "} + number + "\n"),
                    ElementsAre(HasSubstr("not allowed")))
            << number;
}

TEST(configuration, all_mistakes_are_told_at_once_in_their_order)
{
    EXPECT_THAT(complaints("[log]\nlevel = 7\n[network]\nport = no\n[nonsense]\nx = 1\n"),
                ElementsAre(HasSubstr("2: "), HasSubstr("4: "), HasSubstr("5: ")));
}

TEST(configuration, lines_that_are_no_lines_are_found)
{
    EXPECT_THAT(complaints("[network]\nport = 1\nannounce\nallow = any\n"), ElementsAre(HasSubstr("3: neither")));
    EXPECT_THAT(complaints("port = 1\n"), ElementsAre(HasSubstr("1: neither")));
    EXPECT_THAT(complaints("\n\n[network\n"), ElementsAre(HasSubstr("3: neither")));
    EXPECT_THAT(complaints("[log]\nlevel = \xff\n"), ElementsAre("2: this is no text in UTF-8"));
    EXPECT_THAT(complaints("[video]\nencoder = a\\qb\n"), ElementsAre(HasSubstr("2: encoder: a backslash")));
}

TEST(configuration, key_that_is_given_twice_is_a_mistake)
{
    EXPECT_THAT(complaints("[network]\nport = 1\n[log]\n[network]\nport = 2\n"),
                ElementsAre("5: port is given twice, first in line 2"));
}

TEST(configuration, one_half_of_a_pair_is_a_mistake)
{
    EXPECT_THAT(complaints("[access]\nuser = anna\n"), ElementsAre(HasSubstr("2: user also needs password")));
    EXPECT_THAT(complaints("[access]\npassword = x\n"), ElementsAre(HasSubstr("2: password also needs user")));
    EXPECT_THAT(complaints("[tls]\nkey = x\n"), ElementsAre(HasSubstr("2: key also needs certificate")));
}

TEST(configuration, no_complaint_repeats_a_password)
{
    for (char const* const text :
         {"[access]\nuser = anna\npassword hunter2\n", "[access]\npassword = hunter2\\q\n",
          "[access]\npassword = hunter2\n", "[acces]\npassword = hunter2\n", "[access]\npasword = hunter2\n",
          "[access]\npassword = hunter2\npassword = hunter2\n", "password = hunter2\n"}) {
        auto const lines = complaints(text);
        EXPECT_THAT(lines, Not(IsEmpty())) << text;
        for (auto const& line : lines)
            EXPECT_THAT(line, Not(HasSubstr("hunter2"))) << text;
    }
}

TEST(configuration, manual_tells_every_key)
{
    for (char const* const manual : {"/docs/configuration.md", "/man/quillo.conf.5"}) {
        std::ifstream file{QUILLO_SOURCE_FOLDER + std::string{manual}};
        std::string text{std::istreambuf_iterator<char>{file}, {}};
        text = std::regex_replace(text, std::regex{R"(\\-)"}, "-");
        for (auto const& one : options()) {
            EXPECT_THAT(text, HasSubstr("[" + std::string{one.group} + "]")) << manual;
            EXPECT_THAT(text, HasSubstr(one.key)) << manual;
        }
    }
}

class configuration_file : public ::testing::Test
{
  protected:
    void write(std::string const& text, mode_t mode)
    {
        std::ofstream{name_} << text;
        ASSERT_EQ(::chmod(name_.c_str(), mode), 0);
    }
    std::string complaint()
    {
        try {
            read_configuration(name_);
        } catch (bad_configuration const& error) {
            return error.what();
        }
        return {};
    }

    testing::temporary_folder folder_;
    std::string const name_ = folder_.path() + "/quillo.conf";
};

TEST_F(configuration_file, complaints_name_file_and_line)
{
    write("[network]\nport = x\nallow = y\n", 0644);
    EXPECT_THAT(complaint(), AllOf(HasSubstr(name_ + ":2: port"), HasSubstr("\n" + name_ + ":3: allow")));
}

TEST_F(configuration_file, password_is_for_nobody_elses_eyes)
{
    write("[access]\nuser = anna\npassword = hunter2\n", 0600);
    EXPECT_EQ(complaint(), "");
    for (mode_t const mode : {0640, 0604, 0644}) {
        write("[access]\nuser = anna\npassword = hunter2\n", mode);
        EXPECT_THAT(complaint(), AllOf(HasSubstr("chmod 600 '" + name_ + "'"), Not(HasSubstr("hunter2"))));
    }
    write("[network]\nport = 1\n", 0644);
    EXPECT_EQ(complaint(), "");
}

TEST_F(configuration_file, others_must_not_write_to_it)
{
    for (mode_t const mode : {0620, 0602}) {
        write("", mode);
        EXPECT_THAT(complaint(), HasSubstr("chmod go-w '" + name_ + "'"));
    }
}

TEST_F(configuration_file, must_belong_to_the_user)
{
    if (::getuid() != 0)
        GTEST_SKIP() << "only root can give files away";
    write("", 0644);
    ASSERT_EQ(::chown(name_.c_str(), 12345, 12345), 0);
    EXPECT_THAT(complaint(), HasSubstr("belongs to another user"));
}

TEST_F(configuration_file, what_is_no_file_is_refused)
{
    EXPECT_THAT(complaint(), HasSubstr("No such file"));
    ASSERT_EQ(::mkfifo(name_.c_str(), 0600), 0);
    EXPECT_THAT(complaint(), HasSubstr("not a file"));
    ::unlink(name_.c_str());
    write(std::string(70000, '#'), 0600);
    EXPECT_THAT(complaint(), HasSubstr("longer than"));
}

} // namespace
} // namespace quillo::publisher
