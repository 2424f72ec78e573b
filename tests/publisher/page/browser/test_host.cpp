// A host for the browser's test: pictures that carry the wall clock's time of their send call, and a tone.
// test_host NAME WIDTH HEIGHT RATE, until its standard input ends.
#include "sender/Quillolib_send.h"
#include "tests/publisher/measure/test_card.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <thread>

namespace {

std::uint64_t wall_clock_us()
{
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

using steady = std::chrono::steady_clock;

std::atomic<bool> stop{false};

// What is due now when so many a second come in time. A host that comes late goes on there, in sound and pictures.
std::int64_t due(steady::time_point began, int rate)
{
    return static_cast<std::int64_t>(std::chrono::duration<double>(steady::now() - began).count() * rate);
}

void send_tone(SenderHandle sender, steady::time_point began)
{
    constexpr std::int64_t may_be_late = 8; // blocks: less than what makes the sender begin anew
    std::vector<float> block(960);
    for (std::int64_t number = 0; !stop; number = std::max(number + 1, due(began, 100) - may_be_late)) {
        std::int64_t const n = number * 480;
        for (std::size_t k = 0; k < 480; ++k) {
            double const time_s = static_cast<double>(n + static_cast<std::int64_t>(k)) / 48000;
            block[k] = static_cast<float>(0.3 * std::sin(2765 * time_s));
            block[480 + k] = block[k] * static_cast<float>(0.5 + 0.5 * std::sin(3 * time_s));
        }
        SenderAudioFrame const frame{48000, 2, 480, n * 10'000'000 / 48000, block.data(), 480 * sizeof(float)};
        Quillolib_send_send_audio(sender, &frame);
    }
}

void send_pictures(SenderHandle sender, steady::time_point began, int width, int height, int rate)
{
    quillo::measure::test_card const card{width, height, 2};
    std::vector<unsigned char> pictures[4];
    for (std::uint64_t n = 0; n < 4; ++n)
        pictures[n] = card.plain(n);
    for (std::int64_t n = 0; !stop; n = std::max(n + 1, due(began, rate) - 1)) {
        auto& picture = pictures[n % 4];
        Quillolib_send_send_video(sender, nullptr);
        card.mark(picture, static_cast<std::uint64_t>(n), wall_clock_us());
        SenderVideoFrame const frame{width,
                                     height,
                                     SenderFourCC_UYVY,
                                     rate,
                                     1,
                                     static_cast<float>(width) / static_cast<float>(height),
                                     FrameFormat_progressive,
                                     n * 10'000'000 / rate,
                                     picture.data(),
                                     width * 2};
        Quillolib_send_send_video_async(sender, &frame);
    }
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 5) {
        std::cerr << "test_host NAME WIDTH HEIGHT RATE\n";
        return 2;
    }
    SenderSettings const settings{arguments[1], nullptr, true, true};
    SenderHandle const sender = Quillolib_send_create(&settings);
    std::thread waits{[] {
        char byte = 0;
        while (::read(STDIN_FILENO, &byte, 1) > 0)
            continue;
        stop = true;
    }};
    auto const began = steady::now();
    std::thread tone{send_tone, sender, began};
    send_pictures(sender, began, std::atoi(arguments[2]), std::atoi(arguments[3]), std::atoi(arguments[4]));
    tone.join();
    waits.join();
    Quillolib_send_destroy(sender);
    return 0;
}
