#include "bench/road/plain_socket.h"

#include "bench/road/statistics.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <thread>

namespace quillo::bench {

namespace {

constexpr std::size_t packet_bytes = 60000; // as the raw address has them

int listener(sockaddr_in& address)
{
    int const fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bool const good = bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 && listen(fd, 1) == 0 &&
                      getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    return good ? fd : -1;
}

// The other process: reads picture after picture, and answers each with the time at which it was whole.
[[noreturn]] void read_pictures(sockaddr_in const& from, std::size_t picture_bytes)
{
    int const fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(fd, reinterpret_cast<sockaddr const*>(&from), sizeof from) != 0)
        _exit(1);
    std::vector<std::uint8_t> picture(picture_bytes);
    for (;;) {
        if (recv(fd, picture.data(), picture.size(), MSG_WAITALL) != static_cast<ssize_t>(picture.size()))
            _exit(0);
        std::int64_t const whole_ns = monotonic_ns();
        if (send(fd, &whole_ns, sizeof whole_ns, MSG_NOSIGNAL) != sizeof whole_ns)
            _exit(1);
    }
}

// When it was whole at the other end; 0 if the connection broke.
std::int64_t send_picture(int to, std::vector<std::uint8_t> const& picture)
{
    for (std::size_t at = 0; at < picture.size();) {
        auto const sent = send(to, &picture[at], std::min(packet_bytes, picture.size() - at), MSG_NOSIGNAL);
        if (sent <= 0)
            return 0;
        at += static_cast<std::size_t>(sent);
    }
    std::int64_t whole_ns = 0;
    return recv(to, &whole_ns, sizeof whole_ns, MSG_WAITALL) == sizeof whole_ns ? whole_ns : 0;
}

} // namespace

std::vector<double> plain_socket_ms(std::size_t picture_bytes, double interval_s, int pictures)
{
    sockaddr_in address;
    int const door = listener(address);
    pid_t const reader = door < 0 ? -1 : fork();
    if (reader < 0)
        return {};
    if (reader == 0)
        read_pictures(address, picture_bytes);
    int const to = accept(door, nullptr, nullptr);
    close(door);
    int const at_once = 1;
    setsockopt(to, IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
    std::vector<std::uint8_t> const picture(picture_bytes, 0x80);
    std::vector<double> took;
    auto due = std::chrono::steady_clock::now();
    for (int index = 0; index < pictures; ++index) {
        std::this_thread::sleep_until(due += std::chrono::nanoseconds(static_cast<std::int64_t>(1e9 * interval_s)));
        std::int64_t const began = monotonic_ns();
        std::int64_t const whole = send_picture(to, picture);
        if (whole == 0)
            break;
        took.push_back(static_cast<double>(whole - began) / 1e6);
    }
    close(to);
    waitpid(reader, nullptr, 0);
    return took;
}

} // namespace quillo::bench
