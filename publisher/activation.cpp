#include "publisher/activation.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace quillo::publisher {

namespace {

constexpr int first_passed = 3; // descriptors are handed over from here on

int option_of(int fd, int name)
{
    int value = -1;
    socklen_t size = sizeof value;
    return ::getsockopt(fd, SOL_SOCKET, name, &value, &size) == 0 ? value : -1;
}

} // namespace

open::descriptor activated_socket()
{
    char const* const pid = std::getenv("LISTEN_PID");
    char const* const count = std::getenv("LISTEN_FDS");
    bool const meant = pid && count && pid == std::to_string(::getpid());
    bool const one = meant && std::string{count} == "1";
    for (char const* const name : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"})
        ::unsetenv(name);
    if (!meant)
        return {};
    if (!one || option_of(first_passed, SO_DOMAIN) != AF_UNIX || option_of(first_passed, SO_TYPE) != SOCK_STREAM ||
        option_of(first_passed, SO_ACCEPTCONN) != 1)
        throw std::runtime_error{"the service manager handed over something else than one local stream socket"};
    open::descriptor socket{first_passed};
    if (::fcntl(socket.get(), F_SETFD, FD_CLOEXEC) != 0 || ::fcntl(socket.get(), F_SETFL, O_NONBLOCK) != 0)
        throw std::runtime_error{"the service manager's socket cannot be used"};
    return socket;
}

} // namespace quillo::publisher
