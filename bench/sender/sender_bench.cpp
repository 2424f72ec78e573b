// The sender library by itself: how long its calls hold up a host that plays, what it costs while nobody watches, and
// how well its sound clock keeps time. The other end is a publisher in a process of its own that only copies pictures
// out.
//
//   quillo_sender_bench                  calls and idle cost, about two minutes
//   quillo_sender_bench --clock 10       the sound clock, ten minutes
#include "sender/Quillolib_send.h"
#include "tests/sender/open/fake_publisher.h"

#include <CLI/CLI.hpp>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <thread>
#include <vector>

extern char** environ;

namespace {

using namespace std::chrono_literals;
using steady = std::chrono::steady_clock;

double milliseconds(steady::duration time) { return std::chrono::duration<double, std::milli>{time}.count(); }

double cpu_seconds()
{
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    auto const seconds = [](timeval const& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

double quantile(std::vector<double> const& sorted, double part)
{
    return sorted.empty() ? 0 : sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1))];
}

void print(char const* what, std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    std::printf("  %-28s p50 %8.3f  p99 %8.3f  max %8.3f ms\n", what, quantile(values, 0.5), quantile(values, 0.99),
                quantile(values, 1));
}

// This program again, as the publisher.
class publisher_process
{
  public:
    publisher_process(std::string const& folder, bool watches) : watched(watches)
    {
        std::array<std::string, 4> words{"publisher", "--publisher", folder, watches ? "watch" : "ignore"};
        std::array<char*, 5> arguments{};
        std::transform(words.begin(), words.end(), arguments.begin(), [](std::string& word) { return word.data(); });
        if (::posix_spawn(&pid, "/proc/self/exe", nullptr, nullptr, arguments.data(), environ) != 0)
            throw std::runtime_error{"cannot start the publisher's process"};
    }
    ~publisher_process()
    {
        signal(SIGCONT);
        signal(SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }
    publisher_process(publisher_process const&) = delete;
    publisher_process& operator=(publisher_process const&) = delete;
    void signal(int number) const { ::kill(pid, number); }
    bool const watched;

  private:
    pid_t pid = 0;
};

int be_publisher(std::string const& folder, bool watches)
{
    quillo::test::fake_publisher const publisher{folder,
                                                 {.want_video = watches, .want_audio = watches, .remember = false}};
    for (;;)
        ::pause();
}

class sender
{
  public:
    sender()
    {
        SenderSettings const settings{"Sender benchmark", nullptr, true, true};
        handle = Quillolib_send_create(&settings);
    }
    ~sender() { Quillolib_send_destroy(handle); }
    sender(sender const&) = delete;
    sender& operator=(sender const&) = delete;
    SenderHandle get() const { return handle; }

  private:
    SenderHandle handle;
};

// What the host plays to: the library,
struct library
{
    SenderHandle to;
    void sound(SenderAudioFrame const& block) const { Quillolib_send_send_audio(to, &block); }
    void flush() const { Quillolib_send_send_video(to, nullptr); }
    void show(SenderVideoFrame const& frame) const { Quillolib_send_send_video_async(to, &frame); }
};

// or nothing, that only waits as long as sound lasts: what a host in time costs without any library.
class nothing
{
  public:
    void sound(SenderAudioFrame const& block)
    {
        due += std::chrono::nanoseconds{1'000'000'000ll * block.sampleCount / block.sampleRate};
        std::this_thread::sleep_until(due);
    }
    void flush() const {}
    void show(SenderVideoFrame const&) const {}

  private:
    steady::time_point due = steady::now();
};

// What the plug-in does: sound on a thread of its own, pictures by the clock of the host, both buffers in turn.
class host
{
  public:
    host(int w, int h) : width(w), height(h)
    {
        for (auto* const picture : {&source, &buffers[0], &buffers[1]})
            picture->resize(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 2, 100);
    }

    void play(SenderHandle to, int rate, double seconds) { play(library{to}, rate, seconds); }

    template <class To>
    void play(To to, int rate, double seconds, bool has_sound = true)
    {
        std::atomic<bool> stop{!has_sound};
        std::thread sound{[&] {
            std::vector<float> const samples(2 * 480);
            SenderAudioFrame const block{48000, 2, 480, 0, samples.data(), 480 * 4};
            while (!stop)
                to.sound(block);
        }};
        auto const start = steady::now();
        auto const frames = static_cast<int>(seconds * rate);
        for (int frame = 0; frame < frames; ++frame) {
            auto const due = start + frame * 1'000'000'000ns / rate;
            // A host leaves out what it is too late for.
            if (steady::now() - due > 1'000'000'000ns / rate) {
                ++left_out;
                continue;
            }
            std::this_thread::sleep_until(due);
            push(to, rate, buffers[static_cast<std::size_t>(pushes.size() % 2)]);
        }
        stop = true;
        sound.join();
        to.flush();
    }

    void report(std::string const& title)
    {
        std::printf("%s (%zu frames, %d left out by the host)\n", title.c_str(), pushes.size(), left_out);
        print("both sends of a frame", sends);
        print("with a copy for conversion", pushes);
        sends.clear();
        pushes.clear();
        left_out = 0;
    }

  private:
    template <class To>
    void push(To const& to, int rate, std::vector<unsigned char>& buffer)
    {
        auto const begin = steady::now();
        to.flush();
        auto const flushed = steady::now();
        std::memcpy(buffer.data(), source.data(), buffer.size());
        auto const converted = steady::now();
        SenderVideoFrame const frame{.width = width,
                                     .height = height,
                                     .fourCC = SenderFourCC_UYVY,
                                     .frameRateN = rate,
                                     .frameRateD = 1,
                                     .aspectRatio = 16.0f / 9.0f,
                                     .frameFormat = FrameFormat_progressive,
                                     .timecode = 0,
                                     .data = buffer.data(),
                                     .lineStride = width * 2};
        to.show(frame);
        auto const end = steady::now();
        sends.push_back(milliseconds(end - converted + (flushed - begin)));
        pushes.push_back(milliseconds(end - begin));
    }

    int const width;
    int const height;
    std::vector<unsigned char> source;
    std::array<std::vector<unsigned char>, 2> buffers;
    std::vector<double> sends;
    std::vector<double> pushes;
    int left_out = 0;
};

void measure_calls(std::string const& folder, int width, int height, double seconds)
{
    auto const size = std::to_string(width) + "x" + std::to_string(height) + " at 60, ";
    host plays{width, height};
    {
        sender const to;
        plays.play(to.get(), 60, seconds);
        plays.report(size + "no publisher");
    }
    for (bool const watches : {false, true}) {
        publisher_process const publisher{folder, watches};
        sender const to;
        plays.play(to.get(), 60, seconds);
        plays.report(size + (watches ? "publisher reads" : "nobody watches"));
    }
    {
        publisher_process const publisher{folder, true};
        sender const to;
        std::thread stopper{[&] {
            std::this_thread::sleep_for(std::chrono::duration<double>{seconds / 4});
            publisher.signal(SIGSTOP);
        }};
        plays.play(to.get(), 60, seconds);
        stopper.join();
        plays.report(size + "publisher stopped after a quarter of the time");
    }
    {
        sender const to;
        std::thread killer{[&] {
            for (int life = 0; life < 4; ++life) {
                publisher_process const publisher{folder, true};
                std::this_thread::sleep_for(std::chrono::duration<double>{seconds / 5});
            }
        }};
        plays.play(to.get(), 60, seconds);
        killer.join();
        plays.report(size + "publisher killed and replaced four times");
    }
}

void measure_idle(std::string const& folder, double seconds)
{
    publisher_process const publisher{folder, false};
    sender const one;
    host plays{64, 36}; // the size makes no difference to the sender, but to this host's own work
    for (bool const has_sound : {true, false}) {
        auto const cores = [&](auto to) {
            auto const before = cpu_seconds();
            plays.play(to, 60, seconds, has_sound);
            return (cpu_seconds() - before) / seconds;
        };
        // The machine's mood changes; the two take turns.
        double with = 0, without = 0;
        constexpr int turns = 3;
        for (int turn = 0; turn < turns; ++turn) {
            with += cores(library{one.get()}) / turns;
            without += cores(nothing{}) / turns;
        }
        std::printf("nobody watches, 60 pictures%s a second: %.4f core, of which the host alone %.4f\n",
                    has_sound ? " and 100 blocks of sound" : "", with, without);
    }
}

// The time from break to break: a machine that stops this process for a tenth of a second makes the clock start anew,
// which says nothing of its rate. The stop itself is left out, by ending at the last block that came in time.
struct clock_result
{
    double nominal_ms = 0;
    double real_ms = 0;
    int breaks = -1;
    std::vector<double> late;
};

void add_stretch(clock_result& to, std::vector<double> const& returns, double block_ms)
{
    ++to.breaks;
    std::vector<double> late;
    for (std::size_t block = 0; block < returns.size(); ++block)
        late.push_back(returns[block] - static_cast<double>(block) * block_ms);
    if (late.empty())
        return;
    auto const earliest = *std::min_element(late.begin(), late.end());
    auto const in_time = [&](double one) { return one - earliest < 1; };
    auto const first = std::find_if(late.begin(), late.end(), in_time);
    auto const last = std::find_if(late.rbegin(), late.rend(), in_time).base() - 1;
    to.nominal_ms += static_cast<double>(last - first) * block_ms;
    to.real_ms += returns[static_cast<std::size_t>(last - late.begin())] -
                  returns[static_cast<std::size_t>(first - late.begin())];
    for (auto const one : late)
        to.late.push_back(one - earliest);
}

void measure_clock(double minutes, int rate, int block)
{
    sender const to;
    SenderAudioFrame const silence{rate, 2, block, 0, nullptr, 0};
    auto const blocks = static_cast<std::int64_t>(minutes * 60 * rate / block);
    auto const block_ms = 1e3 * block / rate;
    auto const zero = steady::now();
    clock_result result;
    std::vector<double> returns;
    for (std::int64_t sent = 0; sent < blocks; ++sent) {
        auto const called = milliseconds(steady::now() - zero);
        Quillolib_send_send_audio(to.get(), &silence);
        if (!returns.empty() && called - returns.front() - static_cast<double>(returns.size() - 1) * block_ms > 95) {
            add_stretch(result, returns, block_ms);
            returns.clear();
        }
        returns.push_back(milliseconds(steady::now() - zero));
    }
    add_stretch(result, returns, block_ms);
    std::printf("sound clock, blocks of %d at %d Hz: %.3f s in %.6f s, %+.3f ppm; %d breaks\n", block, rate,
                result.nominal_ms / 1e3, result.real_ms / 1e3, (result.real_ms / result.nominal_ms - 1) * 1e6,
                result.breaks);
    print("a block returns late by", result.late);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 4 && std::string{argv[1]} == "--publisher")
        return be_publisher(argv[2], std::string{argv[3]} == "watch");

    double seconds = 10;
    double minutes = 0;
    int rate = 48000;
    CLI::App app{"Measures the sender library with a publisher that only reads."};
    app.add_option("--seconds", seconds, "of each playback")->capture_default_str()->check(CLI::Range(1.0, 3600.0));
    app.add_option("--clock", minutes, "measure the sound clock instead, for so many minutes");
    app.add_option("--rate", rate, "of the sound clock's samples")
        ->capture_default_str()
        ->check(CLI::Range(1000, 768000));
    CLI11_PARSE(app, argc, argv);

    std::array<char, 32> pattern{"/tmp/quillo-bench-XXXXXX"};
    std::string const folder = ::mkdtemp(pattern.data());
    ::setenv("QUILLO_RUNTIME_DIR", folder.c_str(), 1);
    ::setenv("QUILLO_PUBLISHER", "", 1);
    if (minutes > 0) {
        measure_clock(minutes, rate, rate / 100);
    } else {
        measure_calls(folder, 1920, 1080, seconds);
        measure_calls(folder, 3840, 2160, seconds);
        measure_idle(folder, seconds);
    }
    std::filesystem::remove_all(folder);
    return 0;
}
