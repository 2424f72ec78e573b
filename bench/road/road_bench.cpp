// The road from a send call to receivers on this machine: latency, losses, differing bytes, processor time, and how
// long the send calls take while receivers or the publisher misbehave.
//
//   quillo_road_bench --size 1920x1080 --rate 60 --seconds 10 --mount raw --viewers 1
//
// With --module FILE from the plug-in's PushVideo on.
#include "bench/road/module_host.h"
#include "bench/road/plain_socket.h"
#include "bench/road/receiver.h"
#include "bench/road/statistics.h"
#include "bench/road/test_picture.h"
#include "sender/Quillolib_send.h"
#include "sender/open/protocol.h"

#include <CLI/CLI.hpp>

#include <sched.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <optional>
#include <thread>
#include <vector>

namespace {

using namespace quillo::bench;
using json = nlohmann::json;

struct options
{
    int width = 1920, height = 1080, rate = 60, viewers = 1;
    double seconds = 10;
    std::string mount = "raw", module;
    bool audio = true, compare = true, apart = false, stop_one = false, stop_publisher = false, kill_publisher = false;
};

json publisher_status(std::string const& folder)
{
    int const fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    auto const path = folder + "/publisher.sock";
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    std::string text;
    quillo::protocol::header head{quillo::protocol::magic, quillo::protocol::message::status_request, 0, 0};
    timeval const patience{2, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        send(fd, &head, sizeof head, MSG_NOSIGNAL) == sizeof head &&
        recv(fd, &head, sizeof head, MSG_WAITALL) == sizeof head) {
        text.resize(head.size);
        if (recv(fd, text.data(), text.size(), MSG_WAITALL) != static_cast<ssize_t>(text.size()))
            text.clear();
    }
    close(fd);
    return json::parse(text, nullptr, false);
}

json wait_for_source(std::string const& folder, double seconds)
{
    auto const end = monotonic_ns() + static_cast<std::int64_t>(seconds * 1e9);
    while (monotonic_ns() < end) {
        auto const status = publisher_status(folder);
        if (status.is_object() && !status["sources"].empty() && status["sources"][0].contains("format") &&
            !status["sources"][0]["format"].is_null())
            return status;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return nullptr;
}

std::string address_of(json const& status, options const& o)
{
    return status["sources"][0]["url"].get<std::string>() + (o.mount == "raw" ? "/raw" : "");
}

// Sends pictures at the rate from a schedule of its own, as a host whose clock is steady; sound too, unless the module
// sends the pictures.
class host
{
  public:
    explicit host(options const& o) : o_(o), picture_(o.width, o.height)
    {
        if (!o.module.empty()) {
            module_.emplace(o.module, o.width, o.height, o.rate);
            video_ = std::thread([this] { send_video(); });
            return;
        }
        SenderSettings const settings{"Quillo road benchmark", nullptr, true, true};
        sender_ = Quillolib_send_create(&settings);
        for (auto& buffer : buffers_)
            buffer.resize(static_cast<std::size_t>(o.width) * o.height * 2);
        video_ = std::thread([this] { send_video(); });
        if (o.audio)
            audio_ = std::thread([this] { send_audio(); });
    }

    void stop()
    {
        running_ = false;
        video_.join();
        if (audio_.joinable())
            audio_.join();
        if (sender_)
            Quillolib_send_destroy(sender_);
        module_.reset();
    }

    std::atomic<bool> measuring{false};
    std::vector<double> call_ms;
    std::uint32_t sent() const { return counter_; }
    std::uint32_t skipped() const { return skipped_; } // frames that the host was too late for
    double host_cpu_s() const { return host_cpu_s_; }

  private:
    // Makes a call to the sender library, of this thread, and tells how long it took; processor time outside of such
    // calls is the host's own.
    template <class Call>
    double timed(double& cpu_mark, Call const& call)
    {
        host_cpu_s_ += thread_cpu_s() - cpu_mark;
        auto const began = monotonic_ns();
        call();
        auto const ended = monotonic_ns();
        cpu_mark = thread_cpu_s();
        return static_cast<double>(ended - began) / 1e6;
    }

    void send_video()
    {
        auto const began = monotonic_ns();
        auto const due = [&](std::int64_t frame) { return began + frame * 1000000000 / o_.rate; };
        double cpu = thread_cpu_s();
        for (std::int64_t frame = 0; running_; ++frame) {
            // What it is late for it leaves out.
            for (; monotonic_ns() > due(frame + 1); ++frame)
                ++skipped_;
            while (monotonic_ns() < due(frame))
                std::this_thread::sleep_for(std::chrono::nanoseconds(due(frame) - monotonic_ns()));
            double const ms = module_ ? push(frame, cpu) : send(frame, cpu);
            if (measuring)
                call_ms.push_back(ms);
        }
    }

    // What the module does with a frame, without the conversion.
    double send(std::int64_t frame, double& cpu)
    {
        auto& buffer = buffers_[counter_ % 2];
        double const waited_ms = timed(cpu, [&] { Quillolib_send_send_video(sender_, nullptr); });
        ++counter_;
        picture_.draw({counter_, 0}, buffer.data());
        picture_.sign({counter_, monotonic_ns()}, buffer.data()); // from the send call on
        SenderVideoFrame const record{o_.width,
                                      o_.height,
                                      SenderFourCC_UYVY,
                                      o_.rate,
                                      1,
                                      static_cast<float>(o_.width) / static_cast<float>(o_.height),
                                      FrameFormat_progressive,
                                      frame * 10000000 / o_.rate,
                                      buffer.data(),
                                      o_.width * 2};
        return waited_ms + timed(cpu, [&] { Quillolib_send_send_video_async(sender_, &record); });
    }

    double push(std::int64_t frame, double& cpu)
    {
        ++counter_;
        module_->prepare(picture_, counter_);
        module_->sign(picture_, {counter_, monotonic_ns()});
        return timed(cpu, [&] { module_->push(frame); });
    }

    void send_audio()
    {
        std::vector<float> block(480 * 2);
        double cpu = thread_cpu_s();
        for (std::int64_t index = 0; running_; ++index) {
            SenderAudioFrame const record{48000, 2, 480, index * 100000, block.data(), 480 * 4};
            timed(cpu, [&] { Quillolib_send_send_audio(sender_, &record); });
        }
    }

    options const o_;
    test_picture const picture_;
    SenderHandle sender_ = nullptr;
    std::optional<module_host> module_;
    std::vector<std::uint8_t> buffers_[2];
    std::atomic<bool> running_{true};
    std::atomic<std::uint32_t> counter_{0};
    std::atomic<std::uint32_t> skipped_{0};
    std::atomic<double> host_cpu_s_{0};
    std::thread video_, audio_;
};

// Receivers are processes of their own, so that their processor time is not ours.
struct receiver_process
{
    pid_t pid;
    int out;
};

receiver_process start_receiver(std::string const& url, options const& o, double seconds, bool judges = true)
{
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("pipe failed");
    pid_t const pid = fork();
    if (pid == 0) {
        // Only what host and publisher leave, as receivers on other machines would.
        sched_param const none{};
        if (o.apart)
            sched_setscheduler(0, SCHED_IDLE, &none);
        dup2(ends[1], 1);
        close(ends[0]);
        auto const self = std::filesystem::read_symlink("/proc/self/exe").string();
        auto const size = std::to_string(o.width) + "x" + std::to_string(o.height);
        auto const span = std::to_string(seconds), rate = std::to_string(o.rate);
        execl(self.c_str(), self.c_str(), judges ? "--receive" : "--count", url.c_str(), "--size", size.c_str(),
              "--mount", o.mount.c_str(), "--rate", rate.c_str(), "--seconds", span.c_str(),
              o.compare ? nullptr : "--no-compare", nullptr);
        _exit(127);
    }
    close(ends[1]);
    return {pid, ends[0]};
}

json finish_receiver(receiver_process const& receiver)
{
    std::string text;
    char part[4096];
    for (ssize_t size; (size = read(receiver.out, part, sizeof part)) > 0;)
        text.append(part, static_cast<std::size_t>(size));
    close(receiver.out);
    waitpid(receiver.pid, nullptr, 0);
    auto const seen = json::parse(text, nullptr, false);
    return seen.is_discarded() ? json() : seen; // null: killed
}

// Follows the memory of a process, and tells how large it was at most.
class memory_watch
{
  public:
    explicit memory_watch(pid_t pid) : thread_([this, pid] { follow(pid); }) {}
    memory_watch(memory_watch const&) = delete;
    memory_watch& operator=(memory_watch const&) = delete;
    ~memory_watch()
    {
        running_ = false;
        thread_.join();
    }

    std::int64_t most_mb() const { return most_kb_ / 1024; }
    double cpu_s() const { return cpu_s_; } // its own processor time

  private:
    void follow(pid_t pid)
    {
        while (running_) {
            most_kb_ = std::max<std::int64_t>(most_kb_, resident_kb(pid));
            cpu_s_ = thread_cpu_s();
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }

    std::atomic<bool> running_{true};
    std::atomic<std::int64_t> most_kb_{0};
    std::atomic<double> cpu_s_{0};
    std::thread thread_;
};

// After the publisher's death: when there is another one, and when a receiver that connects then shows a picture.
json until_back(options const& o, std::string const& folder, pid_t dead, std::int64_t died_ns)
{
    auto const since = [&] { return static_cast<double>(monotonic_ns() - died_ns) / 1e9; };
    json status;
    while (since() < 20 && (status.is_null() || status["pid"] == dead))
        status = wait_for_source(folder, 1);
    if (status.is_null())
        return nullptr;
    json result{{"source_s", since()}};
    auto const seen = finish_receiver(start_receiver(address_of(status, o), o, 1));
    if (seen.is_object() && seen.contains("first_picture_ns"))
        result["picture_s"] = static_cast<double>(seen["first_picture_ns"].get<std::int64_t>() - died_ns) / 1e9;
    return result;
}

int send(options const& o)
{
    char name[] = "/tmp/quillo-road-XXXXXX";
    std::string const folder = mkdtemp(name);
    setenv("QUILLO_RUNTIME_DIR", folder.c_str(), 1);
    // Before anything else runs: as many bytes through a socket alone.
    auto const alone = o.mount == "raw"
                           ? plain_socket_ms(static_cast<std::size_t>(o.width) * o.height * 2, 1.0 / o.rate, 2 * o.rate)
                           : std::vector<double>();

    host playing(o);
    auto const status = wait_for_source(folder, 20);
    if (status.is_null()) {
        std::cerr << "no publisher within 20 s\n";
        playing.stop();
        return 1;
    }
    pid_t const publisher = status["pid"].get<pid_t>();
    std::string const url = address_of(status, o);

    std::vector<receiver_process> receivers;
    for (int viewer = 0; viewer < o.viewers; ++viewer)
        receivers.push_back(start_receiver(url, o, o.seconds, viewer == 0)); // judging eight would fill the machine
    std::this_thread::sleep_for(std::chrono::seconds(2));                    // start-up is not what is measured

    if (o.stop_one && !receivers.empty())
        kill(receivers.back().pid, SIGSTOP);
    if (o.stop_publisher)
        kill(publisher, SIGSTOP);
    if (o.kill_publisher)
        kill(publisher, SIGKILL);
    auto const happened = monotonic_ns();

    auto const cpu = [&] { return process_cpu_s() - playing.host_cpu_s(); };
    double const own = cpu(), theirs = process_cpu_s(publisher);
    auto const began = monotonic_ns();
    auto const sent = playing.sent();
    memory_watch const publisher_memory(publisher), host_memory(getpid());
    playing.measuring = true;
    json const back = o.kill_publisher ? until_back(o, folder, publisher, happened) : nullptr;
    std::this_thread::sleep_for(std::chrono::nanoseconds(
        happened + static_cast<std::int64_t>(std::max(1.0, o.seconds - 2.5) * 1e9) - monotonic_ns()));
    playing.measuring = false;
    double const span = static_cast<double>(monotonic_ns() - began) / 1e9;
    double const spent = cpu() - own - publisher_memory.cpu_s() - host_memory.cpu_s();

    json result{{"mount", o.mount},
                {"size", std::to_string(o.width) + "x" + std::to_string(o.height)},
                {"viewers", o.viewers},
                {"apart", o.apart}};
    result["skipped_by_host"] = playing.skipped();
    result["sends_per_s"] = (playing.sent() - sent) / span;
    result["sender_cores"] = spent / span;
    result["publisher_cores"] = o.kill_publisher ? 0 : (process_cpu_s(publisher) - theirs) / span;
    result["publisher_mb"] = publisher_memory.most_mb();
    result["host_mb"] = host_memory.most_mb();
    if (!back.is_null())
        result["back_after"] = back;
    result["send_call_ms"] = summary(playing.call_ms);
    if (!alone.empty())
        result["plain_socket_ms"] = summary(alone);

    if (o.stop_publisher)
        kill(publisher, SIGCONT);
    if (o.stop_one && !receivers.empty())
        kill(receivers.back().pid, SIGKILL);
    for (auto const& receiver : receivers)
        result["receivers"].push_back(finish_receiver(receiver));
    auto const last = publisher_status(folder);
    playing.stop();
    if (last.is_object() && !last["sources"].empty())
        result["losses"] = last["sources"][0]["losses"];
    if (last.is_object())
        kill(last["pid"].get<pid_t>(), SIGTERM);
    std::error_code gone; // the publisher takes its own things away at the same time
    std::filesystem::remove_all(folder, gone);
    std::cout << result.dump(1) << '\n';
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    options o;
    std::string size = "1920x1080", url, counted_url;
    CLI::App app{"Measures the road from a send call to receivers on this machine."};
    app.add_option("--size", size, "Picture size");
    app.add_option("--rate", o.rate, "Frames a second");
    app.add_option("--seconds", o.seconds, "How long to watch");
    app.add_option("--mount", o.mount, "raw or default")->check(CLI::IsMember({"raw", "default"}));
    app.add_option("--viewers", o.viewers, "Receivers at once");
    app.add_option("--module", o.module, "Push frames into this plug-in module, without sound")
        ->check(CLI::ExistingFile);
    app.add_flag("!--no-audio", o.audio, "Send no sound");
    app.add_flag("!--no-compare", o.compare, "Look at no more than the stamp of a picture");
    app.add_flag("--apart", o.apart,
                 "Receivers take only the processor time that is left, in place of being on other machines");
    app.add_flag("--stop-one", o.stop_one, "Stop one receiver (SIGSTOP) while measuring");
    app.add_flag("--stop-publisher", o.stop_publisher, "Stop the publisher while measuring");
    app.add_flag("--kill-publisher", o.kill_publisher, "Kill the publisher when measuring begins");
    app.add_option("--receive", url, "Be a receiver of this address and print what was seen");
    app.add_option("--count", counted_url, "Be one that only counts what comes");
    CLI11_PARSE(app, argc, argv);
    if (std::sscanf(size.c_str(), "%dx%d", &o.width, &o.height) != 2 || o.width < stamp_width || o.height < 64) {
        std::cerr << "size must be at least 512x64\n";
        return 2;
    }
    if (!url.empty()) {
        std::cout << receive(url, {o.mount == "raw", o.compare}, o.width, o.height, o.seconds) << '\n';
        return 0;
    }
    if (!counted_url.empty()) {
        std::cout << count(counted_url, o.rate, o.seconds) << '\n';
        return 0;
    }
    return send(o);
}
