#include "tests/support/rtsp_socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace quillo::testing {

namespace {

bool readable(int fd, std::chrono::milliseconds limit)
{
    pollfd waiting{fd, POLLIN, 0};
    return limit.count() >= 0 && ::poll(&waiting, 1, static_cast<int>(limit.count())) > 0;
}

std::string header(std::string const& answer, std::string const& name)
{
    auto const at = answer.find("\r\n" + name + ": ");
    if (at == std::string::npos)
        return {};
    auto const from = at + name.size() + 4;
    return answer.substr(from, answer.find_first_of(";\r", from) - from);
}

} // namespace

rtsp_socket::rtsp_socket(int port, char const* from) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    // A window of a few packets, so that it is full soon.
    int const small = 4096;
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    ::inet_pton(AF_INET, from, &address.sin_addr);
    if (::bind(socket_.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0)
        throw std::runtime_error{"no such address of this machine"};
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket_.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0)
        throw std::runtime_error{"nobody listens"};
}

bool rtsp_socket::send(std::string const& bytes)
{
    return ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

std::string rtsp_socket::ask(std::string const& method, std::string const& url, std::string const& headers)
{
    send(method + " " + url + " RTSP/1.0\r\nCSeq: " + std::to_string(++sequence_) + "\r\n" + headers + "\r\n");
    std::string answer;
    // Byte by byte: media may follow on the same connection.
    auto const read_until = [&](auto enough) {
        while (!enough() && readable(socket_.get(), 10s)) {
            char byte = 0;
            if (::recv(socket_.get(), &byte, 1, 0) != 1)
                return;
            answer += byte;
        }
    };
    read_until([&] { return answer.ends_with("\r\n\r\n"); });
    if (auto const length = header(answer, "Content-Length"); !length.empty()) {
        auto const whole = answer.size() + std::stoul(length);
        read_until([&] { return answer.size() >= whole; });
    }
    return answer;
}

bool rtsp_socket::play(std::string const& url, int streams)
{
    auto const description = ask("DESCRIBE", url);
    if (!description.starts_with("RTSP/1.0 200"))
        return false;
    std::string session;
    int stream = 0;
    for (auto at = description.find("\r\nm="); at != std::string::npos && stream < streams;
         at = description.find("\r\nm=", at + 1)) {
        std::string const channels = std::to_string(2 * stream) + "-" + std::to_string(2 * stream + 1);
        auto const setup = ask("SETUP", url + "/stream=" + std::to_string(stream),
                               "Transport: RTP/AVP/TCP;unicast;interleaved=" + channels + "\r\n" + session);
        if (!setup.starts_with("RTSP/1.0 200"))
            return false;
        session = "Session: " + header(setup, "Session") + "\r\n";
        ++stream;
    }
    return ask("PLAY", url, session).starts_with("RTSP/1.0 200");
}

bool rtsp_socket::ended_by_peer(std::chrono::milliseconds limit)
{
    auto const until = std::chrono::steady_clock::now() + limit;
    for (;;) {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        if (!readable(socket_.get(), left))
            return false;
        char chunk[4096];
        if (::recv(socket_.get(), chunk, sizeof chunk, 0) <= 0)
            return true;
    }
}

void rtsp_socket::read_slowly(std::size_t bytes_a_second, std::chrono::milliseconds during)
{
    auto const until = std::chrono::steady_clock::now() + during;
    std::vector<unsigned char> chunk(bytes_a_second / 100);
    for (auto due = std::chrono::steady_clock::now(); due < until; due += 10ms) {
        std::this_thread::sleep_until(due);
        ::recv(socket_.get(), chunk.data(), chunk.size(), MSG_DONTWAIT);
    }
}

} // namespace quillo::testing
