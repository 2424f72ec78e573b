#include "publisher/live_socket.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <string_view>

namespace quillo::publisher {

namespace {

void leave_bbr(int socket)
{
    char name[16] = {}; // as long as the kernel's may be
    socklen_t size = sizeof name;
    if (::getsockopt(socket, IPPROTO_TCP, TCP_CONGESTION, name, &size) != 0 || std::string_view{name, 3} != "bbr")
        return;
    std::string_view const other = "reno"; // which everybody may choose
    ::setsockopt(socket, IPPROTO_TCP, TCP_CONGESTION, other.data(), static_cast<socklen_t>(other.size()));
}

} // namespace

void make_live(GSocket* socket)
{
    g_socket_set_option(socket, IPPROTO_TCP, TCP_NODELAY, 1, nullptr);
    leave_bbr(g_socket_get_fd(socket));
}

} // namespace quillo::publisher
