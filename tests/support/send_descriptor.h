// Bytes over a local socket, with a descriptor where there is one.
#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <cstddef>
#include <cstring>

namespace quillo::testing {

// What sendmsg says. Less than 0 for a descriptor: none goes along.
inline ssize_t send_with_descriptor(int socket, void const* bytes, std::size_t size, int descriptor, int flags)
{
    iovec data{const_cast<void*>(bytes), size};
    msghdr head{};
    head.msg_iov = &data;
    head.msg_iovlen = 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof descriptor)]{};
    if (descriptor >= 0) {
        head.msg_control = control;
        head.msg_controllen = sizeof control;
        cmsghdr* const part = CMSG_FIRSTHDR(&head);
        part->cmsg_level = SOL_SOCKET;
        part->cmsg_type = SCM_RIGHTS;
        part->cmsg_len = CMSG_LEN(sizeof descriptor);
        std::memcpy(CMSG_DATA(part), &descriptor, sizeof descriptor);
    }
    return ::sendmsg(socket, &head, flags);
}

} // namespace quillo::testing
