#include "tests/publisher/page/http_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cctype>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace quillo::testing {

namespace {

using clock = std::chrono::steady_clock;

} // namespace

http_client::http_client(int port, char const* address, int receive_buffer)
{
    bool const v6 = std::string_view{address}.find(':') != std::string_view::npos;
    socket_ = open::descriptor{::socket(v6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    if (receive_buffer > 0)
        ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &receive_buffer, sizeof receive_buffer);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<std::uint16_t>(port));
    ::inet_pton(AF_INET, address, &to.sin_addr);
    sockaddr_in6 to6{};
    to6.sin6_family = AF_INET6;
    to6.sin6_port = to.sin_port;
    ::inet_pton(AF_INET6, address, &to6.sin6_addr);
    auto const* const any = v6 ? reinterpret_cast<sockaddr const*>(&to6) : reinterpret_cast<sockaddr const*>(&to);
    if (::connect(socket_.get(), any, v6 ? sizeof to6 : sizeof to) != 0)
        throw std::runtime_error{"cannot connect to port " + std::to_string(port)};
}

bool http_client::send(std::string_view bytes)
{
    while (!bytes.empty()) {
        ssize_t const sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

std::string http_client::receive(std::size_t at_most, std::chrono::milliseconds limit)
{
    auto const until = clock::now() + limit;
    std::string text;
    std::vector<char> part(1 << 16);
    while (text.size() < at_most) {
        auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(until - clock::now()).count();
        pollfd waiting{socket_.get(), POLLIN, 0};
        if (left <= 0 || ::poll(&waiting, 1, static_cast<int>(left)) != 1)
            break;
        ssize_t const got = ::recv(socket_.get(), part.data(), std::min(part.size(), at_most - text.size()), 0);
        if (got <= 0)
            break;
        text.append(part.data(), static_cast<std::size_t>(got));
    }
    return text;
}

bool http_client::closes_silently(std::chrono::milliseconds limit)
{
    pollfd waiting{socket_.get(), POLLIN, 0};
    if (::poll(&waiting, 1, static_cast<int>(limit.count())) != 1)
        return false;
    char byte = 0;
    return ::recv(socket_.get(), &byte, 1, 0) <= 0;
}

http_response parse_response(std::string const& text)
{
    http_response response;
    std::size_t const end = text.find("\r\n\r\n");
    if (end == std::string::npos)
        return response;
    std::istringstream lines{text.substr(0, end)};
    std::string line;
    std::getline(lines, line);
    if (line.size() > 12)
        response.status = std::stoi(line.substr(9, 3));
    while (std::getline(lines, line)) {
        std::size_t const colon = line.find(": ");
        std::string name = line.substr(0, colon);
        std::transform(name.begin(), name.end(), name.begin(),
                       [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
        std::string value = colon == std::string::npos ? "" : line.substr(colon + 2);
        if (!value.empty() && value.back() == '\r')
            value.pop_back();
        response.headers[name] = value;
    }
    response.body = text.substr(end + 4);
    return response;
}

http_response get(int port, std::string const& path, std::string const& more_headers, std::string const& method,
                  std::string const& host)
{
    http_client client{port};
    client.send(method + " " + path + " HTTP/1.1\r\nHost: " +
                (host.empty() ? "localhost:" + std::to_string(port) : host) + "\r\n" + more_headers + "\r\n");
    return parse_response(client.receive());
}

} // namespace quillo::testing
