// The command as a user runs it, with the real module and its sender library; nobody publishes.
#include "tests/support/temporary_folder.h"
#include "tests/tools/stand_in_host/clips.h"
#include "tools/quillo/command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <pty.h>
#include <regex>
#include <sys/wait.h>
#include <unistd.h>

namespace quillo {
namespace {

using nlohmann::json;
using quillo::testing::temporary_folder;
using ::testing::HasSubstr;

// In a child process. No publisher is ever started.
[[noreturn]] void become_quillo(std::vector<std::string> arguments, std::string const& runtime_folder)
{
    setenv("QUILLO_RUNTIME_DIR", runtime_folder.c_str(), 1);
    setenv("QUILLO_PUBLISHER", "", 1);
    arguments.insert(arguments.begin(), QUILLO_PROGRAM);
    std::vector<char*> words;
    for (std::string& argument : arguments)
        words.push_back(argument.data());
    words.push_back(nullptr);
    execv(words[0], words.data());
    _exit(127);
}

class PlayCommand : public ::testing::Test
{
  protected:
    struct result
    {
        int code = -1;
        std::string out;
        std::string err;
    };

    // Starts quillo with arguments; its output goes to files in the folder.
    pid_t start(std::vector<std::string> arguments, std::string const& input = "") const
    {
        std::ofstream(file("in")) << input;
        pid_t const child = fork();
        if (child != 0)
            return child;
        dup2(open(file("in").c_str(), O_RDONLY), STDIN_FILENO);
        dup2(open(file("out").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600), STDOUT_FILENO);
        dup2(open(file("err").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600), STDERR_FILENO);
        become_quillo(std::move(arguments), folder.path());
    }

    result finish(pid_t child) const
    {
        int status = 0;
        waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), text("out"), text("err")};
    }

    result run(std::vector<std::string> const& arguments, std::string const& input = "") const
    {
        return finish(start(arguments, input));
    }

    std::string text(char const* name) const
    {
        std::ifstream in(file(name));
        return {std::istreambuf_iterator<char>(in), {}};
    }

    std::string file(std::string const& name) const { return folder.path() + "/" + name; }

    static long lines(std::string const& text) { return std::count(text.begin(), text.end(), '\n'); }

    temporary_folder folder;
};

TEST_F(PlayCommand, SaysWhyInOneLineAndByItsExitCode)
{
    auto expect = [&](std::vector<std::string> const& arguments, int code, std::string const& words) {
        result const r = run(arguments);
        EXPECT_EQ(r.code, code) << r.err;
        EXPECT_THAT(r.err, HasSubstr(words));
        EXPECT_EQ(lines(r.err), 1) << r.err;
        EXPECT_EQ(r.out, "");
    };
    std::string const text = file("words.mp4");
    std::ofstream(text) << "just words\n";
    std::string const sound = file("sound.m4a");
    stand_in::ffmpeg("-f lavfi -i sine=440:d=0.3 -c:a aac " + sound);
    std::string const no_library = file("no.so");
    std::ofstream(no_library) << "no library";

    expect({"play", file("none.mp4")}, exit_input, "none.mp4: No such file or directory");
    expect({"play", text}, exit_input, "cannot read " + text);
    expect({"play", sound}, exit_no_video, "no video in " + sound);
    expect({"play", "--module", "/none.so"}, exit_module, "no module at /none.so");
    expect({"play", "--module", no_library}, exit_module, "cannot load the module");
    expect({"play", "--module", QUILLO_SENDER_LIBRARY}, exit_module, "has no xTransmitEntry");
}

TEST_F(PlayCommand, RefusesWhatItDoesNotUnderstand)
{
    for (std::vector<std::string> const& arguments : {std::vector<std::string>{"play", "--app", "other"},
                                                      {"play", "--size", "12"},
                                                      {"play", "--rate", "fast"},
                                                      {"play", "--speed", "0"},
                                                      {"play", "--pattern", "bars", "file.mp4"},
                                                      {"play", "--format", "argb"},
                                                      {"play", "--frames", "0"},
                                                      {"play", "--in", "5", "--out", "2"},
                                                      {"play", "--nonsense"}}) {
        EXPECT_EQ(run(arguments).code, exit_usage) << arguments[1];
    }
    result const help = run({"play", "--help"});
    EXPECT_EQ(help.code, exit_ok);
    EXPECT_THAT(help.out, HasSubstr("--frames"));
}

TEST_F(PlayCommand, PlaysAPatternThroughTheModule)
{
    result const r = run({"play", "--size", "64x36", "--rate", "50", "--frames", "10", "--json", "--app", "audition"});
    ASSERT_EQ(r.code, exit_ok) << r.err;
    json const j = json::parse(r.out);
    EXPECT_EQ(j["app"], "Adobe Audition");
    EXPECT_EQ(j["exit_code"], 0);
    EXPECT_EQ(j["frames"]["pushed"], 10);
    EXPECT_EQ(j["frames"]["issued"], 10);
    EXPECT_EQ(j["frames"]["disposed"], 10);
    EXPECT_EQ(j["breaches"], json::array());
    EXPECT_EQ(j["clips"][0]["format"], "vuya");
    EXPECT_EQ(j["audio"]["refused"], 0);
    EXPECT_GE(j["audio"]["blocks"], 19); // 10 frames are 200 ms
    auto suite = [](char const* name, int version) { return json{{"name", name}, {"version", version}}; };
    EXPECT_EQ(j["suites"]["acquired"], json({suite("Premiere Playmod Audio Suite", 4), suite("Premiere PPix Suite", 1),
                                             suite("Premiere Time Suite", 1), suite("MediaCore App Info Suite", 3)}));
    EXPECT_EQ(j["suites"]["released"],
              json({suite("Premiere Playmod Audio Suite", 4), suite("Premiere PPix Suite", 1),
                    suite("MediaCore Sequence Info Suite", 5), suite("Premiere Threaded Work Suite", 3),
                    suite("Premiere Time Suite", 1)}));
}

TEST_F(PlayCommand, PlaysFilesOneAfterTheOther)
{
    std::string const first = file("first.mp4");
    std::string const second = file("second.mp4");
    stand_in::ffmpeg("-f lavfi -i testsrc2=s=64x36:r=25 -f lavfi -i sine -t 0.4 -c:v libx264 -c:a aac " + first);
    stand_in::ffmpeg("-f lavfi -i testsrc2=s=36x64:r=50 -t 0.2 -c:v libx264 " + second);
    result const r = run({"play", first, second, "--json", "--format", "bgra"});
    ASSERT_EQ(r.code, exit_ok) << r.err;
    json const j = json::parse(r.out);
    EXPECT_EQ(j["clips"].size(), 2u);
    EXPECT_EQ(j["clips"][0]["audio"]["rate"], 44100);
    EXPECT_EQ(j["clips"][1]["audio"], nullptr);
    EXPECT_EQ(j["clips"][1]["height"], 64);
    EXPECT_EQ(j["clips"][0]["format"], "bgra");
    EXPECT_EQ(j["frames"]["pushed"].get<int>() + j["frames"]["dropped"].get<int>(), 20);
    EXPECT_EQ(j["breaches"], json::array());
}

TEST_F(PlayCommand, ObeysAScript)
{
    result const r = run({"play", "--size", "64x36", "--rate", "50", "--script", "--json"},
                         "pause\nstep 2\nseek 1\nnonsense\nplay\nspeed 2\nquit\n");
    EXPECT_EQ(r.code, exit_ok);
    EXPECT_THAT(r.err, HasSubstr("not understood: nonsense"));
    json const j = json::parse(r.out);
    EXPECT_EQ(j["frames"]["issued"], j["frames"]["disposed"]);
    EXPECT_EQ(j["breaches"], json::array());
}

// The command on a terminal: keys go in, the progress line comes out.
class terminal
{
  public:
    explicit terminal(std::vector<std::string> arguments, std::string const& runtime_folder)
    {
        child_ = forkpty(&screen_, nullptr, nullptr, nullptr);
        if (child_ != 0)
            return;
        become_quillo(std::move(arguments), runtime_folder);
    }
    terminal(terminal const&) = delete;
    terminal& operator=(terminal const&) = delete;
    ~terminal()
    {
        if (child_ > 0) {
            kill(child_, SIGKILL);
            waitpid(child_, nullptr, 0);
        }
        close(screen_);
    }

    void type(std::string const& keys) { ASSERT_EQ(write(screen_, keys.data(), keys.size()), ssize_t(keys.size())); }

    // Waits until the progress line shows a time, "0:00:07.5 paused", that is as wanted; false when none comes.
    template <class Wanted>
    bool shows(Wanted const& wanted)
    {
        static std::regex const line{"(\\d+):(\\d\\d):(\\d\\d\\.\\d)( paused)?  pushed"};
        auto const until = std::chrono::steady_clock::now() + std::chrono::seconds{20};
        while (std::chrono::steady_clock::now() < until) {
            read_some();
            std::smatch found;
            auto const last = seen_.rfind('\r');
            std::string const text = last == std::string::npos ? seen_ : seen_.substr(last);
            if (std::regex_search(text, found, line) &&
                wanted(std::stod(found[3]) + 60 * std::stod(found[2]) + 3600 * std::stod(found[1]), found[4].matched))
                return true;
        }
        return false;
    }

    int end()
    {
        int status = 0;
        while (waitpid(child_, &status, WNOHANG) == 0)
            read_some();
        child_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

  private:
    void read_some()
    {
        pollfd waiting{screen_, POLLIN, 0};
        char part[1024];
        if (poll(&waiting, 1, 50) == 1)
            if (auto const size = read(screen_, part, sizeof part); size > 0)
                seen_.append(part, static_cast<std::size_t>(size));
    }

    int screen_ = -1;
    pid_t child_ = -1;
    std::string seen_;
};

TEST_F(PlayCommand, ObeysTheKeysOfATerminal)
{
    // Two frames a second: the line tells tenths.
    constexpr double frame_s = 0.5;
    terminal screen{{"play", "--size", "64x36", "--rate", "2"}, folder.path()};
    ASSERT_TRUE(screen.shows([](double time, bool paused) { return time >= frame_s && !paused; }));

    screen.type(" ");
    double at = 0;
    ASSERT_TRUE(screen.shows([&](double time, bool paused) {
        at = time;
        return paused;
    }));
    auto const shows_paused_at = [&](double wanted) {
        return screen.shows([&](double time, bool paused) { return paused && std::abs(time - wanted) < 0.2; });
    };
    screen.type("\033[C");
    EXPECT_TRUE(shows_paused_at(at + frame_s)) << "right, from " << at;
    screen.type("\033[C\033[C\033OC"); // held down, and as some terminals say it
    EXPECT_TRUE(shows_paused_at(at + 4 * frame_s)) << "three times right, from " << at + frame_s;
    screen.type("\033[D");
    EXPECT_TRUE(shows_paused_at(at + 3 * frame_s)) << "left";
    screen.type("\033[Ax"); // of no meaning
    screen.type(" ");
    EXPECT_TRUE(screen.shows([&](double time, bool paused) { return !paused && time >= at + 4 * frame_s; }));
    screen.type("q");
    EXPECT_EQ(screen.end(), exit_ok);
}

TEST_F(PlayCommand, EndsInOrderWhenInterrupted)
{
    pid_t const child = start({"play", "--size", "64x36", "--rate", "50", "--json", "--module", QUILLO_MODULE});
    // It has begun when the module is in its memory.
    std::string const maps = "/proc/" + std::to_string(child) + "/maps";
    bool loaded = false;
    for (auto const until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
         !loaded && std::chrono::steady_clock::now() < until;) {
        std::ifstream in(maps);
        loaded = std::string(std::istreambuf_iterator<char>(in), {}).find(QUILLO_MODULE) != std::string::npos;
    }
    ASSERT_TRUE(loaded);
    kill(child, SIGINT);
    result const r = finish(child);
    EXPECT_EQ(r.code, exit_interrupted);
    json const j = json::parse(r.out);
    EXPECT_EQ(j["suites"]["released"].size(), 5u);
    EXPECT_EQ(j["frames"]["issued"], j["frames"]["disposed"]);
    EXPECT_EQ(j["breaches"], json::array());
}

} // namespace
} // namespace quillo
