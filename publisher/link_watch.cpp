#include "publisher/link_watch.h"

#include "publisher/log.h"

#include <glib-unix.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace quillo::publisher {

namespace {

constexpr std::size_t largest_datagram = 16384; // the kernel's own limit is 8 KiB, or a page

open::descriptor listen_to_links()
{
    open::descriptor made{::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)};
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_LINK;
    if (made && ::bind(made.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0)
        made.reset();
    return made;
}

} // namespace

bool idle_links::take(std::span<std::byte const> messages)
{
    bool back = false;
    while (messages.size() >= sizeof(nlmsghdr)) {
        nlmsghdr header;
        std::memcpy(&header, messages.data(), sizeof header);
        if (header.nlmsg_len < sizeof header || header.nlmsg_len > messages.size())
            break;
        bool const about_link = header.nlmsg_type == RTM_NEWLINK || header.nlmsg_type == RTM_DELLINK;
        if (about_link && header.nlmsg_len >= NLMSG_LENGTH(sizeof(ifinfomsg))) {
            ifinfomsg link;
            std::memcpy(&link, messages.data() + NLMSG_HDRLEN, sizeof link);
            if (header.nlmsg_type == RTM_DELLINK)
                indexes_.erase(link.ifi_index);
            else if ((link.ifi_flags & IFF_RUNNING) == 0)
                indexes_.insert(link.ifi_index);
            else
                back |= indexes_.erase(link.ifi_index) > 0;
        }
        messages = messages.subspan(std::min<std::size_t>(NLMSG_ALIGN(header.nlmsg_len), messages.size()));
    }
    return back;
}

link_watch::link_watch(GMainContext* context, std::function<void()> back)
    : back_(std::move(back)), socket_(listen_to_links())
{
    if (!socket_) {
        log::info("interfaces that come back are not noticed: ", std::strerror(errno));
        return;
    }
    readable_.reset(g_unix_fd_source_new(socket_.get(), G_IO_IN));
    auto const heard = +[](gint, GIOCondition, gpointer self) -> gboolean {
        static_cast<link_watch*>(self)->read();
        return G_SOURCE_CONTINUE;
    };
    g_source_set_callback(readable_.get(), G_SOURCE_FUNC(heard), this, nullptr);
    g_source_attach(readable_.get(), context);
}

link_watch::~link_watch()
{
    if (readable_)
        g_source_destroy(readable_.get());
}

void link_watch::read()
{
    std::array<std::byte, largest_datagram> datagram;
    bool back = false;
    for (;;) {
        sockaddr_nl from{};
        socklen_t size = sizeof from;
        ssize_t const got =
            ::recvfrom(socket_.get(), datagram.data(), datagram.size(), 0, reinterpret_cast<sockaddr*>(&from), &size);
        if (got < 0 && errno == ENOBUFS) // some were lost
            continue;
        if (got <= 0)
            break;
        if (from.nl_pid == 0) // the kernel's
            back |= idle_.take({datagram.data(), static_cast<std::size_t>(got)});
    }
    if (back)
        back_();
}

} // namespace quillo::publisher
