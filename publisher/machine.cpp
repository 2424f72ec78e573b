#include "publisher/machine.h"

#include "publisher/gst_ptr.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <memory>
#include <vector>

namespace quillo::publisher {

namespace {

std::vector<std::string> addresses()
{
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0)
        return {};
    std::unique_ptr<ifaddrs, releases<::freeifaddrs>> const list{first};
    std::vector<std::string> found;
    for (auto const* one = list.get(); one; one = one->ifa_next) {
        if (!one->ifa_addr || one->ifa_addr->sa_family != AF_INET)
            continue;
        if (!(one->ifa_flags & IFF_RUNNING) || (one->ifa_flags & IFF_LOOPBACK))
            continue;
        sockaddr_in address{};
        std::memcpy(&address, one->ifa_addr, sizeof address);
        char text[INET_ADDRSTRLEN] = {};
        ::inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
        found.emplace_back(text);
    }
    return found;
}

object_ptr<GInetAddress> parsed(std::string const& address)
{
    return object_ptr<GInetAddress>{g_inet_address_new_from_string(address.c_str())};
}

} // namespace

std::string machine_name()
{
    char name[HOST_NAME_MAX + 1] = {};
    ::gethostname(name, HOST_NAME_MAX);
    std::string const full = name;
    return full.substr(0, full.find('.'));
}

std::string machine_address()
{
    auto const found = addresses();
    for (auto const& address : found)
        if (g_inet_address_get_is_site_local(parsed(address).get()))
            return address;
    return found.empty() ? "127.0.0.1" : found.front();
}

bool is_loopback(std::string const& address)
{
    auto const what = parsed(address);
    return what && g_inet_address_get_is_loopback(what.get());
}

} // namespace quillo::publisher
