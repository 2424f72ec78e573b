#include "tests/support/macho/darwin.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace quillo::macho {

namespace {

struct darwin_local_address
{
    unsigned char length, family;
    char path[104];
};

int connect_local(int socket, darwin_local_address const* address, unsigned)
{
    if (address->family != AF_UNIX)
        std::abort();
    sockaddr_un here{};
    here.sun_family = AF_UNIX;
    std::memcpy(here.sun_path, address->path, sizeof address->path);
    return told(::connect(socket, reinterpret_cast<sockaddr const*>(&here), sizeof here));
}

int make_socket(int family, int type, int protocol)
{
    if (family != AF_UNIX || type != SOCK_STREAM)
        std::abort();
    return told(::socket(family, type, protocol));
}

// Options of the socket level by Darwin's numbers.
int set_option(int socket, int level, int option, void const* value, unsigned size)
{
    if (level != 0xffff)
        std::abort();
    switch (option) {
    case 0x1022:
        return 0; // no SIGPIPE: every send below asks for that
    case 0x1001:
        return told(::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, value, size));
    case 0x1002:
        return told(::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, value, size));
    default:
        std::abort();
    }
}

int peer_user(int socket, unsigned* user, unsigned* group)
{
    ucred other{};
    socklen_t size = sizeof other;
    int const result = told(::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &other, &size));
    *user = other.uid;
    *group = other.gid;
    return result;
}

struct darwin_message
{
    void* name;
    unsigned name_size;
    iovec* parts;
    int part_count;
    void* control;
    unsigned control_size;
    int flags;
};

struct darwin_control
{
    unsigned length;
    int level, type, descriptor;
};

// At most one descriptor goes along.
long send_message(int socket, darwin_message const* message, int)
{
    msghdr here{};
    here.msg_iov = message->parts;
    here.msg_iovlen = static_cast<std::size_t>(message->part_count);
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> room{};
    if (message->control != nullptr) {
        darwin_control given{};
        if (message->control_size != sizeof given)
            std::abort();
        std::memcpy(&given, message->control, sizeof given);
        if (given.length != sizeof given || given.level != 0xffff || given.type != SCM_RIGHTS)
            std::abort();
        here.msg_control = room.data();
        here.msg_controllen = room.size();
        cmsghdr* const head = CMSG_FIRSTHDR(&here);
        head->cmsg_level = SOL_SOCKET;
        head->cmsg_type = SCM_RIGHTS;
        head->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(head), &given.descriptor, sizeof given.descriptor);
    }
    return told(::sendmsg(socket, &here, MSG_NOSIGNAL));
}

long receive(int socket, void* to, std::size_t size, int flags)
{
    if (flags != 0)
        std::abort();
    return told(::recv(socket, to, size, 0));
}

} // namespace

std::span<adapter const> socket_adapters()
{
    static std::array const table = {
        adapt("_connect", connect_local), adapt("_getpeereid", peer_user),  adapt("_recv", receive),
        adapt("_sendmsg", send_message),  adapt("_setsockopt", set_option), adapt("_socket", make_socket),
    };
    return table;
}

} // namespace quillo::macho
