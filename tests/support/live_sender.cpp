#include "tests/support/live_sender.h"

#include <cstring>

namespace quillo::testing {

namespace {

using clock = std::chrono::steady_clock;

} // namespace

live_sender::generator of_luma(unsigned char luma, unsigned char chroma)
{
    return [luma, chroma](protocol::video_format_body const& shape, std::uint64_t) {
        std::vector<unsigned char> picture(picture_bytes(shape), chroma);
        for (std::size_t k = 1; k < picture.size(); k += 2)
            picture[k] = luma;
        return picture;
    };
}

std::size_t picture_bytes(protocol::video_format_body const& format)
{
    auto const pixels = static_cast<std::size_t>(format.width) * static_cast<std::size_t>(format.height);
    return pixels * (format.fourcc == SenderFourCC_UYVY ? 2 : format.fourcc == SenderFourCC_UYVA ? 3 : 4);
}

std::vector<unsigned char> noise_picture(protocol::video_format_body const& format, std::uint64_t number)
{
    std::vector<unsigned char> bytes(picture_bytes(format));
    auto state = static_cast<std::uint32_t>(number * 2654435761u + 12345u);
    for (auto& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<unsigned char>(state >> 24);
    }
    // The fourth byte of a "BGRX" pixel does not travel.
    bytes[0] = static_cast<unsigned char>(number);
    bytes[1] = static_cast<unsigned char>(number >> 8);
    return bytes;
}

float live_sender::sample(std::uint64_t s, int channel)
{
    return static_cast<float>((s + 100u * static_cast<unsigned>(channel)) % 1000u) / 1000.0f - 0.5f;
}

live_sender::live_sender(std::string const& socket, std::string const& name, std::uint8_t id,
                         protocol::video_format_body const& format, generator make, protocol::audio_format_body sound)
    : channel_(socket), make_(std::move(make)), sound_(sound), format_(format)
{
    channel_.hello(name, id);
    if (!channel_.receive(protocol::message::welcome))
        throw std::runtime_error{"not welcome"};
    channel_.announce(format);
    channel_.announce(sound);
    thread_ = std::thread{[this] { run(); }};
}

live_sender::~live_sender()
{
    stop_ = true;
    thread_.join();
}

void live_sender::change_format(protocol::video_format_body const& format)
{
    std::lock_guard const lock{mutex_};
    format_ = format;
}

void live_sender::run()
{
    auto announced = format_;
    std::uint64_t samples = 0;
    std::uint64_t number = 0;
    auto const begin = clock::now();
    auto due = begin;
    bool told_held = false;
    auto const heed_wants = [&](protocol_sender::message const& got) {
        if (got.type != protocol::message::wants)
            return;
        wanted_ = got.body[0] != std::byte{0};
        told_held = false;
    };
    while (!stop_) {
        auto const format = [&] {
            std::lock_guard const lock{mutex_};
            return format_;
        }();
        if (format != announced)
            channel_.announce(format);
        announced = format;
        std::int64_t const period_ns = 1'000'000'000ll * format.rate_d / format.rate_n;

        // What comes back until the next picture is due.
        while (clock::now() < due) {
            auto const left = std::chrono::ceil<std::chrono::milliseconds>(due - clock::now());
            if (auto const got = channel_.receive(std::max(left, 1ms)))
                heed_wants(*got);
            else if (channel_.ended())
                return;
        }
        due += std::chrono::nanoseconds{period_ns};
        bool const repeat = paused_;
        if (!wanted_ || (repeat && told_held)) {
            if (!repeat)
                ++number;
            continue;
        }
        told_held = repeat;
        auto const timecode = static_cast<std::int64_t>(number) * period_ns / 100;
        channel_.video(format, make_(format, number), timecode, repeat);
        while (!channel_.has_free_slot()) {
            auto const got = channel_.receive(1000ms);
            if (!got)
                break;
            heed_wants(*got);
        }
        if (repeat)
            continue;
        ++sent_;
        ++number;
        auto const block = static_cast<std::size_t>(sound_.rate * period_ns / 1'000'000'000);
        std::vector<float> planar(block * static_cast<std::size_t>(sound_.channels));
        for (int c = 0; c < sound_.channels; ++c)
            for (std::size_t s = 0; s < block; ++s)
                planar[static_cast<std::size_t>(c) * block + s] = sample(samples + s, c);
        samples += block;
        channel_.audio(sound_, planar, timecode);
    }
}

} // namespace quillo::testing
