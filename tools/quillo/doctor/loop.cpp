#include "publisher/gst_ptr.h"
#include "tools/quillo/doctor/finding.h"
#include "tools/quillo/publisher_status.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gst/app/gstappsink.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>

extern char** environ;

namespace quillo::doctor {

namespace {

using namespace std::chrono_literals;
using clock = std::chrono::steady_clock;

constexpr auto patience = 10s;
constexpr int wanted_pictures = 25;

// A folder for this one time, with an empty configuration in it.
class workplace
{
  public:
    workplace()
    {
        std::string name = (std::filesystem::temp_directory_path() / "quillo-doctor-XXXXXX").string();
        if (!::mkdtemp(name.data()))
            throw std::runtime_error{"no temporary folder"};
        path_ = name;
        std::ofstream{configuration()} << "[network]\nannounce = false\n[page]\nenabled = false\n";
    }
    ~workplace()
    {
        std::error_code none;
        std::filesystem::remove_all(path_, none);
    }
    workplace(workplace const&) = delete;
    workplace& operator=(workplace const&) = delete;

    std::string const& path() const { return path_; }
    std::string configuration() const { return path_ + "/quillo.conf"; }

  private:
    std::string path_;
};

// This very program with another command, silent, in that folder; ended with the object.
class child
{
  public:
    child(workplace const& in, std::vector<std::string> arguments)
    {
        std::error_code none;
        arguments.insert(arguments.begin(), std::filesystem::read_symlink("/proc/self/exe", none).string());
        std::vector<std::string> variables{"QUILLO_RUNTIME_DIR=" + in.path(), "QUILLO_PUBLISHER="};
        for (char** one = environ; *one; ++one)
            if (!std::string_view{*one}.starts_with("QUILLO_RUNTIME_DIR=") &&
                !std::string_view{*one}.starts_with("QUILLO_PUBLISHER="))
                variables.emplace_back(*one);
        posix_spawn_file_actions_t files;
        ::posix_spawn_file_actions_init(&files);
        ::posix_spawn_file_actions_addopen(&files, 0, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&files, 1, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addopen(&files, 2, (in.path() + "/log").c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                           0600);
        int const failed = ::posix_spawn(&pid_, arguments.front().c_str(), &files, nullptr, pointers(arguments).data(),
                                         pointers(variables).data());
        ::posix_spawn_file_actions_destroy(&files);
        if (failed != 0)
            throw std::runtime_error{"cannot start " + arguments.front()};
    }
    ~child()
    {
        ::kill(pid_, SIGINT);
        ::waitpid(pid_, nullptr, 0);
    }
    child(child const&) = delete;
    child& operator=(child const&) = delete;

  private:
    static std::vector<char*> pointers(std::vector<std::string>& texts)
    {
        std::vector<char*> all;
        for (auto& one : texts)
            all.push_back(one.data());
        all.push_back(nullptr);
        return all;
    }

    pid_t pid_ = -1;
};

template <class Look>
auto wait_for(Look look) -> decltype(look())
{
    for (auto const until = clock::now() + patience; clock::now() < until; std::this_thread::sleep_for(20ms))
        if (auto found = look())
            return found;
    return {};
}

std::string last_line(std::string const& file)
{
    std::ifstream lines{file};
    std::string last;
    for (std::string one; std::getline(lines, one);)
        if (!one.empty())
            last = one;
    return last;
}

// Pictures that came within the time, and the time of the first.
struct seen
{
    int pictures = 0;
    std::chrono::milliseconds first{0};
};

seen watch(std::string const& url)
{
    std::string const text = "rtspsrc location=" + url +
                             " protocols=tcp latency=0 ! rtpvrawdepay ! appsink name=out sync=false max-buffers=100";
    element_ptr const pipeline{gst_parse_launch(text.c_str(), nullptr)};
    if (!pipeline)
        throw std::runtime_error{"no receiver can be made (gstreamer1.0-plugins-good)"};
    element_ptr const out{gst_bin_get_by_name(GST_BIN(pipeline.get()), "out")};
    auto const began = clock::now();
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    seen result;
    while (result.pictures < wanted_pictures && clock::now() - began < patience) {
        sample_ptr const picture{gst_app_sink_try_pull_sample(GST_APP_SINK(out.get()), GST_SECOND)};
        if (picture && ++result.pictures == 1)
            result.first = std::chrono::duration_cast<std::chrono::milliseconds>(clock::now() - began);
    }
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return result;
}

} // namespace

findings loop()
{
    auto const failed = [](std::string const& what, std::string const& remedy) {
        return findings{{"loop", state::bad, what, remedy}};
    };
    try {
        workplace const place;
        auto const log = [&] { return "its last words: " + last_line(place.path() + "/log"); };
        child const serving{place, {"serve", "--port", "0", "--bind", "127.0.0.1", "--config", place.configuration()}};
        if (!wait_for([&] { return publisher_status(500ms, place.path()); }))
            return failed("a publisher does not start", log());
        child const playing{place, {"play", "--pattern", "bars", "--size", "320x180", "--rate", "25"}};
        auto const url = wait_for([&]() -> std::optional<std::string> {
            auto const status = publisher_status(500ms, place.path());
            if (!status || (*status)["sources"].empty())
                return std::nullopt;
            return (*status)["sources"][0].value("url", "");
        });
        if (!url)
            return failed("the plug-in does not reach the publisher", log());
        auto const got = watch(*url + "/raw");
        if (got.pictures < wanted_pictures)
            return failed("only " + std::to_string(got.pictures) + " pictures came from " + *url + "/raw", log());
        return {{"loop", state::good,
                 "host, plug-in, sender, publisher, RTSP, receiver: " + std::to_string(got.pictures) +
                     " pictures, the first after " + std::to_string(got.first.count()) + " ms",
                 ""}};
    } catch (std::exception const& error) {
        return failed(error.what(), "the lines above may tell why");
    }
}

} // namespace quillo::doctor
