// Small helpers around the operating system's calls.
#pragma once

#include "sender/open/descriptor.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace quillo::open {

inline int check_call(int result, char const* what)
{
    if (result < 0)
        throw std::system_error{errno, std::generic_category(), what};
    return result;
}

// Not for child processes, and never waiting.
inline void set_private_and_nonblocking(int fd)
{
    check_call(::fcntl(fd, F_SETFD, FD_CLOEXEC), "fcntl");
    check_call(::fcntl(fd, F_SETFL, O_NONBLOCK), "fcntl");
}

// Both in one step where the system can, because the host may start a process of its own at any moment.
inline std::array<descriptor, 2> make_pipe()
{
    std::array<int, 2> ends{};
#ifdef __linux__
    check_call(::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), "pipe2");
    return {descriptor{ends[0]}, descriptor{ends[1]}};
#else
    check_call(::pipe(ends.data()), "pipe");
    std::array<descriptor, 2> result{descriptor{ends[0]}, descriptor{ends[1]}};
    for (int const end : ends)
        set_private_and_nonblocking(end);
    return result;
#endif
}

inline descriptor make_local_socket()
{
#ifdef __linux__
    return descriptor{check_call(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "socket")};
#else
    descriptor result{check_call(::socket(AF_UNIX, SOCK_STREAM, 0), "socket")};
    set_private_and_nonblocking(result.get());
    int const on = 1;
    ::setsockopt(result.get(), SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
    return result;
#endif
}

} // namespace quillo::open
