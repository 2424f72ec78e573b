// Somebody who says one thing to a server on this machine, and listens until the connection ends.
#pragma once

#include "sender/open/descriptor.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <vector>

namespace quillo::fuzz {

[[noreturn]] inline void fail(char const* what)
{
    std::perror(what);
    std::abort();
}

// From another address each time: one address has not so many ports.
inline open::descriptor connection(int port)
{
    static std::uint32_t last = 0;
    last = (last + 1) % 0xFFFF00;
    open::descriptor made{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(0x7F000001 + last);
    if (::bind(made.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0)
        fail("cannot bind");
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    if (::connect(made.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0)
        fail("cannot connect");
    return made;
}

struct conversation
{
    open::descriptor socket;
    std::vector<std::uint8_t> said;
};

// A server that does not let go of one who has said his last word within so many seconds is at fault.
inline constexpr int patience = 5;

inline void wait_for_end(conversation const& one)
{
    for (char answer[4096];;) {
        pollfd waiting{one.socket.get(), POLLIN, 0};
        if (::poll(&waiting, 1, patience * 1000) == 0) {
            // Not what libFuzzer takes for the culprit: that is the last one said.
            std::FILE* const file = std::fopen("build/fuzz/held-on", "wb");
            if (file != nullptr && std::fwrite(one.said.data(), 1, one.said.size(), file) == one.said.size() &&
                std::fclose(file) == 0)
                std::fprintf(
                    stderr,
                    "the server holds on to a connection that has ended: what it said is in build/fuzz/held-on\n");
            std::abort();
        }
        if (::recv(one.socket.get(), answer, sizeof answer, 0) <= 0)
            return;
    }
}

// So many may be waiting for their end at once: some servers take their time about it.
inline void say(int port, std::uint8_t const* data, std::size_t size, std::size_t at_once)
{
    static std::deque<conversation> talking;
    auto const& one = talking.emplace_back(conversation{connection(port), {data, data + size}});
    ::send(one.socket.get(), data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
    ::shutdown(one.socket.get(), SHUT_WR);
    if (talking.size() < at_once)
        return;
    wait_for_end(talking.front());
    talking.pop_front();
}

} // namespace quillo::fuzz
