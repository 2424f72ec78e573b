// Speaks to a publisher as a sender does, well or badly. Calls wait for what they ask for, with a limit.
#pragma once

#include "sender/Quillolib_send.h"
#include "sender/open/descriptor.h"
#include "sender/open/protocol.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quillo::testing {

using namespace std::chrono_literals;

protocol::video_format_body video_format(int width, int height, std::uint32_t fourcc, int rate_n = 25, int rate_d = 1);

class protocol_sender
{
  public:
    using milliseconds = std::chrono::milliseconds;

    // Connects; throws std::runtime_error when nobody listens.
    explicit protocol_sender(std::string const& socket);

    // One on a socket that is connected already.
    explicit protocol_sender(open::descriptor connected) : socket_(std::move(connected)) {}

    // Messages as they should be.
    void hello(std::string const& name, std::uint8_t id);
    void announce(protocol::video_format_body const& format);
    void announce(protocol::audio_format_body const& format);
    void make_pool(std::size_t picture_bytes);
    // Through a free slot as far as is known from what was received, or else through any.
    void video(protocol::video_format_body const& format, std::span<unsigned char const> picture,
               std::int64_t timecode_100ns, bool repeat = false);
    void audio(protocol::audio_format_body const& format, std::span<float const> planar, std::int64_t timecode_100ns);
    void silence(protocol::audio_format_body const& format, int samples);

    // Anything at all.
    bool send(protocol::message type, std::span<std::byte const> body, int descriptor = -1);
    template <class Body>
    bool send_record(protocol::message type, Body const& body, int descriptor = -1)
    {
        return send(type, std::as_bytes(std::span{&body, 1}), descriptor);
    }
    bool send_bytes(std::span<std::byte const> bytes, int descriptor = -1);

    struct message
    {
        protocol::message type;
        std::vector<std::byte> body;
    };
    std::optional<message> receive(milliseconds limit = 3000ms);
    std::optional<message> receive(protocol::message type, milliseconds limit = 3000ms); // others are passed over
    bool wait_for_wants(bool video, milliseconds limit = 3000ms);
    bool wait_for_release(milliseconds limit = 3000ms);
    bool has_free_slot() const;
    bool ended() const { return ended_; } // by the publisher, as far as has been received
    std::string status();

    void hang_up() { socket_.reset(); }

    protocol::pool_body pool{};
    int memory() const { return memory_.get(); }

  private:
    open::descriptor socket_;
    open::descriptor memory_;
    std::byte* mapped_ = nullptr;
    void heed_release(message const& got);
    std::uint32_t take_slot();

    std::uint32_t next_slot_ = 0;
    std::uint32_t taken_ = 0; // a bit for each slot
    std::uint64_t index_ = 0;
    std::uint64_t samples_ = 0;
    std::vector<std::byte> arrived_;
    bool ended_ = false;
};

// Sealed memory for pictures.
open::descriptor picture_memory(std::size_t bytes, bool sealed = true);

} // namespace quillo::testing
