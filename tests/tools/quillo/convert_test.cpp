#include "tools/quillo/command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quillo {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class Convert : public testing::Test
{
  protected:
    Convert()
    {
        std::string name = (fs::temp_directory_path() / "quillo-convert-XXXXXX").string();
        folder_ = mkdtemp(name.data());
    }
    ~Convert() override { fs::remove_all(folder_); }

    std::string file(char const* name) const { return (folder_ / name).string(); }

    void put(char const* name, std::string const& content) const
    {
        std::ofstream{folder_ / name, std::ios::binary} << content;
    }

    std::string get(char const* name) const
    {
        std::ifstream in{folder_ / name, std::ios::binary};
        return {std::istreambuf_iterator<char>{in}, {}};
    }

    // The exit code; errors_ holds what was said.
    int run(std::vector<std::string> arguments)
    {
        CLI::App app;
        int code = exit_ok;
        add_convert(app, code);
        arguments.insert(arguments.begin(), "convert");
        std::reverse(arguments.begin(), arguments.end());
        testing::internal::CaptureStderr();
        testing::internal::CaptureStdout();
        try {
            app.parse(arguments);
        } catch (CLI::ParseError const&) {
            code = exit_usage;
        }
        errors_ = testing::internal::GetCapturedStderr();
        said_ = testing::internal::GetCapturedStdout();
        return code;
    }

    fs::path folder_;
    std::string errors_;
    std::string said_;
};

TEST_F(Convert, RawToRaw)
{
    put("in", std::string{"\x01\x02\x03\xff\x04\x05\x06\xff", 8});
    EXPECT_EQ(run({file("in"), file("out"), "--from", "vuya", "--to", "uyvy_a", "--size", "2x1"}), exit_ok) << errors_;
    EXPECT_EQ(get("out"), "\x02\x03\x01\x06\xff\xff");
    EXPECT_THAT(said_, HasSubstr("vuya::uyvy_a 2x1, counts as opaque"));
}

TEST_F(Convert, RawToPngAndBackAgain)
{
    std::string const picture{"\x01\x02\x03\x04\x05\x06\x07\x08", 8};
    put("in", picture);
    ASSERT_EQ(run({file("in"), file("x.png"), "--from", "bgra", "--to", "bgra", "--size", "1x2"}), exit_ok) << errors_;
    ASSERT_EQ(run({file("x.png"), file("out"), "--from", "bgra", "--to", "bgra"}), exit_ok) << errors_;
    EXPECT_EQ(get("out"), picture);
}

TEST_F(Convert, MissingFileIsAnInputError)
{
    EXPECT_EQ(run({file("none"), file("out"), "--from", "vuya", "--to", "uyvy", "--size", "2x1"}), exit_input);
    EXPECT_THAT(errors_, HasSubstr("cannot be read"));
}

TEST_F(Convert, WrongSizeSaysWhatFits)
{
    put("in", std::string(640 * 480 * 4, 'x'));
    EXPECT_EQ(run({file("in"), file("out"), "--from", "vuya", "--to", "uyvy", "--size", "2x1"}), exit_input);
    EXPECT_THAT(errors_, HasSubstr("has 1228800 bytes, vuya of 2x1 has 8; so many has 640x480"));
    EXPECT_EQ(run({file("in"), file("out"), "--from", "vuya", "--to", "uyvy"}), exit_usage);
    EXPECT_THAT(errors_, HasSubstr("needs --size, perhaps 640x480"));
    EXPECT_EQ(run({file("in"), file("out"), "--from", "vuya", "--to", "uyvy", "--size", "big"}), exit_usage);
    EXPECT_THAT(errors_, HasSubstr("WIDTHxHEIGHT"));
}

TEST_F(Convert, UnknownLayoutsAreListed)
{
    put("in", "abcd");
    EXPECT_EQ(run({file("in"), file("out"), "--from", "nv12", "--to", "uyvy", "--size", "1x1"}), exit_usage);
    EXPECT_THAT(errors_, HasSubstr("vuya to uyvy"));
    EXPECT_EQ(run({file("in"), file("out.png"), "--from", "vuya", "--to", "uyvy", "--size", "1x1"}), exit_usage);
    EXPECT_THAT(errors_, HasSubstr("a PNG cannot hold uyvy; it can: bgra"));
    EXPECT_FALSE(fs::exists(folder_ / "out.png"));
}

TEST_F(Convert, OptionsMustBelongToTheConversion)
{
    put("in", "abcd");
    EXPECT_EQ(run({file("in"), file("out"), "--from", "vuya", "--to", "uyvy", "--size", "1x1", "--expand"}),
              exit_usage);
    EXPECT_THAT(errors_, HasSubstr("--expand does nothing for vuya::uyvy"));
}

TEST_F(Convert, NamesAreNeeded)
{
    EXPECT_EQ(run({file("in")}), exit_usage);
    EXPECT_EQ(run({}), exit_usage);
}

TEST_F(Convert, ListNeedsNothingElse)
{
    EXPECT_EQ(run({"--list"}), exit_ok);
    EXPECT_THAT(said_, HasSubstr("vuya to uyvy, uyvy_a, vuya"));
}

TEST_F(Convert, UnwritableOutputFails)
{
    put("in", std::string(8, 'x'));
    EXPECT_THROW(run({file("in"), file("no/such/folder"), "--from", "vuya", "--to", "uyvy", "--size", "2x1"}),
                 std::runtime_error);
    testing::internal::GetCapturedStderr();
    testing::internal::GetCapturedStdout();
}

} // namespace
} // namespace quillo
