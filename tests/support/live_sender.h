// A host that plays: pictures at their rate and sound beside them, from a thread of its own, while somebody watches.
#pragma once

#include "tests/support/protocol_sender.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

namespace quillo::testing {

class live_sender
{
  public:
    // Picture number n in the format's slot layout.
    using generator = std::function<std::vector<unsigned char>(protocol::video_format_body const&, std::uint64_t n)>;

    live_sender(std::string const& socket, std::string const& name, std::uint8_t id,
                protocol::video_format_body const& format, generator make,
                protocol::audio_format_body sound = {48000, 2});
    live_sender(live_sender const&) = delete;
    live_sender& operator=(live_sender const&) = delete;
    ~live_sender();

    void change_format(protocol::video_format_body const& format);
    // A paused host sends nothing, except the held picture once to somebody who comes.
    void pause(bool paused) { paused_ = paused; }
    // Sound is a ramp: sample s of channel c is ((s + 100 c) mod 1000) / 1000 - 0.5.
    static float sample(std::uint64_t s, int channel);

    std::uint64_t sent() const { return sent_; }
    bool wanted() const { return wanted_; }

  private:
    void run();

    protocol_sender channel_;
    generator const make_;
    protocol::audio_format_body const sound_;
    std::mutex mutex_;
    protocol::video_format_body format_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> paused_{false};
    std::atomic<bool> wanted_{false};
    std::atomic<std::uint64_t> sent_{0};
    std::thread thread_;
};

// Bytes that differ from row to row and picture to picture; the first four carry the number of the picture where the
// layout has room for it.
std::vector<unsigned char> noise_picture(protocol::video_format_body const& format, std::uint64_t number);

// Of one luma and one chroma all over, for UYVY.
live_sender::generator of_luma(unsigned char luma, unsigned char chroma = 128);

std::size_t picture_bytes(protocol::video_format_body const& format);

} // namespace quillo::testing
