// What the built library shows to the outside, read back from the file.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string output_of(std::string const& command)
{
    std::unique_ptr<FILE, int (*)(FILE*)> const pipe{::popen(command.c_str(), "r"), ::pclose};
    std::string text;
    for (int letter = 0; pipe && (letter = std::fgetc(pipe.get())) != EOF;)
        text += static_cast<char>(letter);
    return text;
}

std::set<std::string> words_after(std::string const& text, std::string const& mark, char end)
{
    std::set<std::string> found;
    for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
        auto const start = at + mark.size();
        found.insert(text.substr(start, text.find(end, start) - start));
    }
    return found;
}

std::string const library = QUILLO_SEND_LIBRARY;
std::string const dynamic_section = output_of("readelf -dW '" + library + "'");

} // namespace

TEST(sender_library, ExportsTheFiveFunctionsAndNothingElse)
{
    std::istringstream symbols{output_of("nm -D --defined-only '" + library + "'")};
    std::set<std::string> names;
    for (std::string address, kind, name; symbols >> address >> kind >> name;)
        names.insert(kind + " " + name);
    EXPECT_EQ(names, (std::set<std::string>{"T Quillolib_send_create", "T Quillolib_send_destroy",
                                            "T Quillolib_send_send_audio", "T Quillolib_send_send_video",
                                            "T Quillolib_send_send_video_async"}));
}

TEST(sender_library, IsFoundByItsName)
{
    EXPECT_EQ(words_after(dynamic_section, "Library soname: [", ']'), std::set<std::string>{"libquillo.so.4"});
    EXPECT_EQ(library.substr(library.rfind('/') + 1), "libquillo.so.4");
}

TEST(sender_library, NeedsTheRuntimesOfCAndCppOnly)
{
    std::set<std::string> const runtimes{
        "libc.so.6",     "libm.so.6",      "libpthread.so.0",      "libdl.so.2",
        "libgcc_s.so.1", "libstdc++.so.6", "ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1"};
    auto const needed = words_after(dynamic_section, "Shared library: [", ']');
    EXPECT_FALSE(needed.empty());
    for (auto const& name : needed) {
        bool const sanitizer =
            name.starts_with("libclang_rt.") || name.starts_with("libasan") || name.starts_with("libtsan");
        EXPECT_TRUE(sanitizer || runtimes.contains(name)) << name;
    }
    EXPECT_TRUE(words_after(dynamic_section, "RPATH", '\n').empty());
}

TEST(sender_library, StaysLoaded) { EXPECT_NE(dynamic_section.find("NODELETE"), std::string::npos); }
