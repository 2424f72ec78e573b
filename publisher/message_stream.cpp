#include "publisher/message_stream.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace quillo::publisher {

namespace {

constexpr std::size_t read_size = 1 << 16;
constexpr std::size_t max_passed = 4; // descriptors taken in with one read; more are cut off by the system

bool try_again_later() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

} // namespace

bool message_stream::receive()
{
    if (begin_ > 0) {
        std::memmove(arrived_.data(), arrived_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (arrived_.size() < end_ + read_size)
        arrived_.resize(end_ + read_size);

    iovec data{arrived_.data() + end_, arrived_.size() - end_};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(max_passed * sizeof(int))> control{};
    msghdr head{};
    head.msg_iov = &data;
    head.msg_iovlen = 1;
    head.msg_control = control.data();
    head.msg_controllen = control.size();
    ssize_t const count = ::recvmsg(socket_.get(), &head, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (count < 0)
        return try_again_later();

    bool fine = count > 0;
    for (cmsghdr* part = CMSG_FIRSTHDR(&head); part; part = CMSG_NXTHDR(&head, part)) {
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS)
            continue;
        std::size_t const fds = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t k = 0; k < fds; ++k) {
            int fd = -1;
            std::memcpy(&fd, CMSG_DATA(part) + k * sizeof fd, sizeof fd);
            open::descriptor passed{fd};
            // One pool message, one descriptor: a second one before the first was taken has no meaning.
            fine = fine && !passed_;
            passed_ = std::move(passed);
        }
    }
    end_ += static_cast<std::size_t>(count);
    return fine;
}

std::optional<message_stream::message> message_stream::next()
{
    protocol::header head;
    std::size_t const there = end_ - begin_;
    if (confused_ || there < sizeof head)
        return std::nullopt;
    std::memcpy(&head, arrived_.data() + begin_, sizeof head);
    if (head.magic != protocol::magic || head.size > protocol::max_body) {
        confused_ = true;
        return std::nullopt;
    }
    if (there < sizeof head + head.size)
        return std::nullopt;
    std::span<std::byte const> const body{arrived_.data() + begin_ + sizeof head, head.size};
    begin_ += sizeof head + head.size;
    return message{head.type, body};
}

bool message_stream::send_bytes(protocol::message type, std::span<std::byte const> body)
{
    protocol::header const head{protocol::magic, type, static_cast<std::uint32_t>(body.size()), 0};
    if (unsent_.size() + sizeof head + body.size() > max_unsent)
        return false;
    auto const head_bytes = std::as_bytes(std::span{&head, 1});
    unsent_.insert(unsent_.end(), head_bytes.begin(), head_bytes.end());
    unsent_.insert(unsent_.end(), body.begin(), body.end());
    return flush();
}

bool message_stream::flush()
{
    while (!unsent_.empty()) {
        ssize_t const count = ::send(socket_.get(), unsent_.data(), unsent_.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0)
            return try_again_later();
        unsent_.erase(unsent_.begin(), unsent_.begin() + count);
    }
    return true;
}

} // namespace quillo::publisher
