// Cuts what comes in on a local socket into messages, and collects what goes out. Never waits.
#pragma once

#include "sender/open/descriptor.h"
#include "sender/open/protocol.h"

#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <type_traits>
#include <vector>

namespace quillo::publisher {

class message_stream
{
  public:
    static constexpr std::size_t max_unsent = 1 << 20; // bytes that a peer may leave unread

    explicit message_stream(open::descriptor connected) : socket_(std::move(connected)) {}

    int fd() const { return socket_.get(); }
    bool has_unsent() const { return !unsent_.empty(); }

    struct message
    {
        protocol::message type;
        std::span<std::byte const> body; // valid until the next call of receive
    };

    // Reads what has come. False: the peer is gone, or sent more descriptors than it may.
    bool receive();

    // The next whole message. Nothing: more has to come, or the peer is confused.
    std::optional<message> next();

    // A header was not one of ours; the connection is of no more use.
    bool confused() const { return confused_; }

    // The descriptor that came along, if any; the caller's from then on.
    open::descriptor take_descriptor() { return std::move(passed_); }

    // Sends, or keeps what does not go now. False: the peer is gone or reads nothing.
    template <class Body>
    bool send(protocol::message type, Body const& body)
    {
        static_assert(std::is_trivially_copyable_v<Body>);
        return send_bytes(type, std::as_bytes(std::span{&body, 1}));
    }
    bool send_bytes(protocol::message type, std::span<std::byte const> body);
    bool flush();

  private:
    open::descriptor socket_;
    std::vector<std::byte> arrived_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    open::descriptor passed_;
    std::vector<std::byte> unsent_;
    bool confused_ = false;
};

// A body of exactly this type, or nothing.
template <class Body>
std::optional<Body> body_of(std::span<std::byte const> bytes)
{
    static_assert(std::is_trivially_copyable_v<Body>);
    if (bytes.size() != sizeof(Body))
        return std::nullopt;
    Body body;
    std::memcpy(&body, bytes.data(), sizeof body);
    return body;
}

} // namespace quillo::publisher
