#include "sender/open/channel.h"

#include "sender/open/system_call.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <utility>

namespace quillo::open {

namespace {

#ifdef __linux__
constexpr int send_flags = MSG_NOSIGNAL;
#else
constexpr int send_flags = 0; // the socket is set to raise no signal
#endif

bool same_user(int socket)
{
#ifdef __linux__
    ucred other{};
    socklen_t size = sizeof other;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &other, &size) == 0 && other.uid == ::getuid();
#else
    uid_t user;
    gid_t group;
    return ::getpeereid(socket, &user, &group) == 0 && user == ::getuid();
#endif
}

bool try_again_later() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

ssize_t send_with_descriptor(int socket, std::span<std::byte const> bytes, int passed)
{
    iovec data{const_cast<std::byte*>(bytes.data()), bytes.size()};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;

    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    if (passed >= 0) {
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        auto* const head = CMSG_FIRSTHDR(&message);
        head->cmsg_level = SOL_SOCKET;
        head->cmsg_type = SCM_RIGHTS;
        head->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(head), &passed, sizeof passed);
    }
    return ::sendmsg(socket, &message, send_flags);
}

// The body's size of what a publisher says, nothing for a message that is not its to say.
std::optional<std::size_t> body_size(protocol::message type)
{
    switch (type) {
    case protocol::message::welcome:
        return sizeof(protocol::welcome_body);
    case protocol::message::wants:
        return sizeof(protocol::wants_body);
    case protocol::message::release:
        return sizeof(protocol::release_body);
    default:
        return {};
    }
}

} // namespace

std::optional<channel> channel::connect(std::string const& path, std::error_code& problem)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        problem = std::make_error_code(std::errc::filename_too_long);
        return {};
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);

    auto socket = make_local_socket();
    if (::connect(socket.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0) {
        problem = {errno, std::generic_category()};
        return {};
    }
    if (!same_user(socket.get())) {
        problem = std::make_error_code(std::errc::permission_denied);
        return {};
    }
    return channel{std::move(socket)};
}

bool channel::send_bytes(protocol::message type, std::span<std::byte const> body, std::span<std::byte const> tail,
                         int passed)
{
    protocol::header const head{.magic = protocol::magic,
                                .type = type,
                                .size = static_cast<std::uint32_t>(body.size() + tail.size()),
                                .reserved = 0};
    auto const head_bytes = std::as_bytes(std::span{&head, 1});
    for (auto const part : {head_bytes, body, tail})
        waiting.insert(waiting.end(), part.begin(), part.end());
    if (passed >= 0)
        passed_fd = passed;
    return flush();
}

bool channel::flush()
{
    while (sent < waiting.size()) {
        auto const count = send_with_descriptor(socket.get(), std::span{waiting}.subspan(sent), passed_fd);
        if (count < 0)
            return try_again_later();
        passed_fd = -1;
        sent += static_cast<std::size_t>(count);
    }
    waiting.clear();
    sent = 0;
    return true;
}

bool channel::receive()
{
    std::memmove(arrived.data(), arrived.data() + arrived_begin, arrived_end - arrived_begin);
    arrived_end -= std::exchange(arrived_begin, 0);
    auto const count = ::recv(socket.get(), arrived.data() + arrived_end, arrived.size() - arrived_end, 0);
    if (count < 0)
        return try_again_later();
    arrived_end += static_cast<std::size_t>(count);
    return count > 0;
}

std::optional<incoming> channel::next()
{
    auto const there = arrived_end - arrived_begin;
    auto const* const bytes = arrived.data() + arrived_begin;
    protocol::header head;
    if (garbage || there < sizeof head)
        return {};
    std::memcpy(&head, bytes, sizeof head);

    auto const size = body_size(head.type);
    if (head.magic != protocol::magic || !size || head.size != *size) {
        garbage = true;
        return {};
    }
    if (there < sizeof head + *size)
        return {};

    incoming result{.type = head.type, .welcome = {}, .wants = {}, .release = {}};
    auto const* const body = bytes + sizeof head;
    if (head.type == protocol::message::welcome)
        std::memcpy(&result.welcome, body, *size);
    else if (head.type == protocol::message::wants)
        std::memcpy(&result.wants, body, *size);
    else
        std::memcpy(&result.release, body, *size);
    arrived_begin += sizeof head + *size;
    return result;
}

} // namespace quillo::open
