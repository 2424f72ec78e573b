// The connection to the publisher: messages out and in over the local socket, without ever waiting.
#pragma once

#include "sender/open/descriptor.h"
#include "sender/open/protocol.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <type_traits>
#include <vector>

namespace quillo::open {

// What the publisher says; bodies that do not belong to the type are zero.
struct incoming
{
    protocol::message type;
    protocol::welcome_body welcome;
    protocol::wants_body wants;
    protocol::release_body release;
};

class channel
{
  public:
    // Connects to a listener that runs as the same user. Nothing, with the reason in problem, when that cannot be done.
    static std::optional<channel> connect(std::string const& socket, std::error_code& problem);

    int fd() const { return socket.get(); }

    // Whether everything queued has gone out.
    bool idle() const { return waiting.empty(); }

    // Queues a message and sends as much as goes without waiting. A descriptor may be passed while idle only; it must
    // stay open until the channel is idle again. False: the connection is lost.
    template <class Body>
    bool send(protocol::message type, Body const& body, std::span<std::byte const> tail = {}, int passed = -1)
    {
        static_assert(std::is_trivially_copyable_v<Body>);
        return send_bytes(type, std::as_bytes(std::span{&body, 1}), tail, passed);
    }

    // Sends more of what is queued. False: the connection is lost.
    bool flush();

    // Reads what has come. False: the connection is lost, or the publisher says what nobody understands.
    bool receive();

    // The next message read, if it is complete.
    std::optional<incoming> next();

    // A message was not understood; the connection is of no more use.
    bool confused() const { return garbage; }

  private:
    explicit channel(descriptor connected) : socket(std::move(connected)) {}

    bool send_bytes(protocol::message, std::span<std::byte const> body, std::span<std::byte const> tail, int passed);

    descriptor socket;
    std::vector<std::byte> waiting; // not sent yet, from sent on
    std::size_t sent = 0;
    int passed_fd = -1; // goes with the first byte waiting

    std::array<std::byte, 1024> arrived{};
    std::size_t arrived_begin = 0;
    std::size_t arrived_end = 0;
    bool garbage = false;
};

} // namespace quillo::open
