#include "tools/quillo/publisher_status.h"

#include "sender/open/descriptor.h"
#include "sender/open/protocol.h"
#include "sender/open/runtime_folder.h"

#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace quillo {

namespace {

using steady = std::chrono::steady_clock;

bool wait_for(int fd, short events, steady::time_point until)
{
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(until - steady::now());
    pollfd waiting{fd, events, 0};
    return left.count() > 0 && poll(&waiting, 1, static_cast<int>(left.count())) == 1;
}

bool receive(int fd, char* to, std::size_t size, steady::time_point until)
{
    while (size > 0) {
        if (!wait_for(fd, POLLIN, until))
            return false;
        ssize_t const got = recv(fd, to, size, 0);
        if (got <= 0)
            return false;
        to += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

open::descriptor connect_to(std::string const& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return {};
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    open::descriptor fd{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    if (connect(fd.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0)
        return {};
    return fd;
}

} // namespace

std::optional<nlohmann::json> publisher_status(std::chrono::milliseconds at_most, std::string const& folder)
{
    auto const until = steady::now() + at_most;
    open::descriptor const fd = connect_to(open::socket_path(folder));
    protocol::header const request{protocol::magic, protocol::message::status_request, 0, 0};
    if (fd.get() < 0 || send(fd.get(), &request, sizeof request, MSG_NOSIGNAL) != sizeof request)
        return std::nullopt;
    protocol::header answer{};
    if (!receive(fd.get(), reinterpret_cast<char*>(&answer), sizeof answer, until) || answer.magic != protocol::magic ||
        answer.type != protocol::message::status || answer.size > protocol::max_body)
        return std::nullopt;
    std::string text(answer.size, '\0');
    if (!receive(fd.get(), text.data(), text.size(), until))
        return std::nullopt;
    nlohmann::json status = nlohmann::json::parse(text, nullptr, false);
    return status.is_object() ? std::optional(std::move(status)) : std::nullopt;
}

std::vector<published_source> sources_of(nlohmann::json const& status, int pid)
{
    std::vector<published_source> found;
    if (!status.contains("sources"))
        return found;
    for (nlohmann::json const& source : status["sources"])
        if (source.value("pid", 0) == pid)
            found.push_back({source.value("name", ""), source.value("url", ""),
                             static_cast<int>(source.value("receivers", nlohmann::json::array()).size())});
    return found;
}

} // namespace quillo
