// Frames, losses, differing bytes, latency, processor time and memory of the whole road on the loopback: the sender
// library, quillo serve, stock receivers. Not a test: publisher_measure --help.
#include "sender/Quillolib_send.h"
#include "tests/publisher/measure/processes.h"
#include "tests/publisher/measure/test_card.h"
#include "tests/support/rtsp_receiver.h"
#include "tests/support/temporary_folder.h"

#include <CLI/CLI.hpp>

#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <thread>

namespace quillo::measure {
namespace {

using clock = std::chrono::steady_clock;
using receiver = testing::rtsp_receiver;

struct options
{
    int width = 1920;
    int height = 1080;
    int rate = 60;
    int seconds = 10;
    int viewers = 1;
    int stalled = 0;
    bool bgr = false;
    bool udp = false;
    bool compare = false;
    std::string mount = "raw";
    std::string encoder;
    std::string quillo = QUILLO_PROGRAM;
};

std::uint64_t now_us()
{
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(clock::now().time_since_epoch()).count());
}

// As a host with our plug-in sends: the next picture is made while the one before is on its way.
void play(options const& o)
{
    static std::atomic<bool> stop{false};
    ::signal(SIGTERM, [](int) { stop = true; });
    SenderSettings const settings{"Measure", nullptr, true, true};
    SenderHandle const sender = Quillolib_send_create(&settings);
    test_card const card{o.width, o.height, o.bgr ? 4 : 2};
    std::thread sound{[&] {
        std::vector<float> block(960);
        for (std::int64_t n = 0; !stop; n += 480) {
            for (std::size_t k = 0; k < 480; ++k)
                block[k] = block[480 + k] =
                    0.1f * static_cast<float>(std::sin(static_cast<double>(n + static_cast<std::int64_t>(k)) * 0.0576));
            SenderAudioFrame const frame{48000, 2, 480, n * 10'000'000 / 48000, block.data(), 480 * sizeof(float)};
            Quillolib_send_send_audio(sender, &frame);
        }
    }};
    std::vector<unsigned char> pictures[4];
    for (std::uint64_t n = 0; n < 4; ++n)
        pictures[n] = card.plain(n);
    for (std::int64_t n = 0; !stop; ++n) {
        auto& picture = pictures[n % 4];
        Quillolib_send_send_video(sender, nullptr);
        card.mark(picture, static_cast<std::uint64_t>(n), now_us());
        SenderVideoFrame const frame{o.width,
                                     o.height,
                                     o.bgr ? SenderFourCC_BGRX : SenderFourCC_UYVY,
                                     o.rate,
                                     1,
                                     static_cast<float>(o.width) / static_cast<float>(o.height),
                                     FrameFormat_progressive,
                                     n * 10'000'000 / o.rate,
                                     picture.data(),
                                     o.width * (o.bgr ? 4 : 2)};
        Quillolib_send_send_video_async(sender, &frame);
    }
    sound.join();
    Quillolib_send_destroy(sender);
}

struct tally
{
    std::uint64_t frames = 0;
    std::uint64_t lost = 0;
    std::uint64_t damaged = 0;
    std::uint64_t last = 0;
    std::vector<double> latency_ms;
    clock::time_point first;
    clock::time_point latest;

    void take(GstVideoFrame& frame, std::int64_t arrived_ns, test_card const* card)
    {
        int const pixel = GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, 0);
        auto const* const rows = static_cast<unsigned char const*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
        auto const stride = static_cast<std::size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0));
        auto const seen = test_card::read(rows, stride, pixel, pixel == 2 ? 1 : 0);
        latest = clock::now();
        if (frames++ == 0)
            first = latest;
        else if (seen.n > last + 1)
            lost += seen.n - last - 1;
        last = seen.n;
        latency_ms.push_back((static_cast<double>(arrived_ns) / 1e3 - static_cast<double>(seen.time_us)) / 1e3);
        if (card && card->differing(receiver::tight_bytes(frame)) > 0)
            ++damaged;
    }
};

int free_port()
{
    int const fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(fd, reinterpret_cast<sockaddr*>(&address), size);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(fd);
    return ntohs(address.sin_port);
}

void run(options const& o)
{
    testing::temporary_folder const folder;
    ::setenv("QUILLO_RUNTIME_DIR", folder.path().c_str(), 1);
    ::setenv("QUILLO_PUBLISHER", "", 1);
    int const port = free_port();
    std::string const log = folder.path() + "/log";
    std::vector<std::string> command{o.quillo, "serve", "--bind", "127.0.0.1", "--port", std::to_string(port)};
    if (!o.encoder.empty())
        command.insert(command.end(), {"--encoder", o.encoder});
    child const publisher{command, log};
    child const sender{[&] { play(o); }};
    std::this_thread::sleep_for(std::chrono::milliseconds{1500});

    std::string const url = "rtsp://127.0.0.1:" + std::to_string(port) + "/measure" + (o.mount == "raw" ? "/raw" : "");
    auto const kind = o.mount == "raw" ? receiver::decode::raw : receiver::decode::h264;
    auto const over = o.udp ? receiver::over::udp : receiver::over::tcp;
    std::vector<std::unique_ptr<child>> stalled;
    for (int k = 0; k < o.stalled; ++k)
        stalled.push_back(std::make_unique<child>([&] {
            gst_init(nullptr, nullptr);
            receiver slow{url, over, kind};
            slow.start();
            for (;;)
                ::pause();
        }));
    if (o.stalled)
        std::this_thread::sleep_for(std::chrono::seconds{2});

    gst_init(nullptr, nullptr);
    std::unique_ptr<test_card> card;
    if (o.compare && o.mount == "raw")
        card = std::make_unique<test_card>(o.width, o.height, o.bgr ? 3 : 2);
    if (o.width < test_card::bits * test_card::block)
        throw std::runtime_error{"pictures too narrow for their marks"};
    std::vector<tally> tallies(static_cast<std::size_t>(o.viewers));
    std::vector<std::unique_ptr<receiver>> receivers;
    auto const asked = clock::now();
    for (auto& one : tallies) {
        receivers.push_back(std::make_unique<receiver>(url, over, kind));
        receivers.back()->on_frame = [&one, &card](GstVideoFrame& frame, std::int64_t arrived_ns) {
            one.take(frame, arrived_ns, card.get());
        };
        receivers.back()->start();
    }
    std::this_thread::sleep_for(std::chrono::seconds{1});
    for (auto const& one : stalled)
        one->signal(SIGSTOP);
    double const sender_cpu = sender.cpu_seconds(), publisher_cpu = publisher.cpu_seconds(),
                 own_cpu = own_cpu_seconds();
    auto const from = clock::now();
    double most_mb = 0;
    for (int second = 0; second < o.seconds; ++second) {
        std::this_thread::sleep_for(std::chrono::seconds{1});
        most_mb = std::max(most_mb, publisher.resident_mb());
    }
    double const span = std::chrono::duration<double>(clock::now() - from).count();
    std::printf("%dx%d %d/s %s %s over %s, %d viewers, %d stalled, %.1f s\n", o.width, o.height, o.rate,
                o.bgr ? "BGRX" : "UYVY", o.mount.c_str(), o.udp ? "UDP" : "TCP", o.viewers, o.stalled, span);
    std::printf("cores: sender %.3f publisher %.3f receivers %.3f; publisher %.1f MB at most, %.1f MB now\n",
                (sender.cpu_seconds() - sender_cpu) / span, (publisher.cpu_seconds() - publisher_cpu) / span,
                (own_cpu_seconds() - own_cpu) / span, most_mb, publisher.resident_mb());
    receivers.clear();
    for (auto& one : tallies) {
        if (one.frames < 2) {
            std::printf("nothing received\n");
            continue;
        }
        auto latency = one.latency_ms;
        std::sort(latency.begin(), latency.end());
        auto const at = [&](double part) {
            return latency[static_cast<std::size_t>(part * static_cast<double>(latency.size() - 1))];
        };
        double const seen = std::chrono::duration<double>(one.latest - one.first).count();
        std::printf("%.2f fps, %llu frames, %llu lost, %llu damaged%s; latency ms p50 %.1f p99 %.1f max %.1f; first "
                    "picture %.0f ms\n",
                    static_cast<double>(one.frames - 1) / seen, static_cast<unsigned long long>(one.frames),
                    static_cast<unsigned long long>(one.lost), static_cast<unsigned long long>(one.damaged),
                    card ? "" : " (not compared)", at(0.5), at(0.99), latency.back(),
                    std::chrono::duration<double, std::milli>(one.first - asked).count());
    }
    std::ifstream log_text{log};
    for (std::string line; std::getline(log_text, line);)
        if (line.find("warning") != std::string::npos || line.find("error") != std::string::npos)
            std::printf("publisher: %s\n", line.c_str());
}

} // namespace
} // namespace quillo::measure

int main(int argc, char** argv)
{
    quillo::measure::options o;
    CLI::App app{"Measures the road from the sender library through quillo serve to stock receivers on the loopback."};
    app.add_option("--width", o.width)->capture_default_str();
    app.add_option("--height", o.height)->capture_default_str();
    app.add_option("--rate", o.rate)->capture_default_str();
    app.add_option("--seconds", o.seconds)->capture_default_str();
    app.add_option("--viewers", o.viewers)->capture_default_str();
    app.add_option("--stalled", o.stalled, "further viewers that stop reading after a second")->capture_default_str();
    app.add_flag("--bgr", o.bgr, "send BGRX");
    app.add_flag("--udp", o.udp);
    app.add_flag("--compare", o.compare, "compare every byte; loads the receiver");
    app.add_option("--mount", o.mount, "raw or default")->capture_default_str();
    app.add_option("--encoder", o.encoder);
    app.add_option("--quillo", o.quillo, "the program to measure")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    quillo::measure::run(o);
}
