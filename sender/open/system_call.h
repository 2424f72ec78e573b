// Small helpers around the operating system's calls.
#pragma once

#include <fcntl.h>

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

} // namespace quillo::open
