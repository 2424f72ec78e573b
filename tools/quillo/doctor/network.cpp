#include "publisher/gst_ptr.h"
#include "publisher/machine.h"
#include "sender/open/descriptor.h"
#include "tools/quillo/doctor/finding.h"
#include "tools/quillo/publisher_status.h"

#include <arpa/inet.h>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace quillo::doctor {

namespace {

using namespace std::chrono_literals;

constexpr char const* avahi_socket = "/run/avahi-daemon/socket";

int rtsp_port(publisher::configuration const& from) { return from.tls ? from.tls_port : from.port; }

bool can_listen_at(std::string const& address, int port)
{
    auto const parsed = adopt<object_ptr<GInetAddress>>(g_inet_address_new_from_string(address.c_str()));
    object_ptr<GSocketAddress> const place{g_inet_socket_address_new(parsed.get(), static_cast<std::uint16_t>(port))};
    object_ptr<GSocket> const socket{
        g_socket_new(g_inet_address_get_family(parsed.get()), G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, nullptr)};
    return socket && g_socket_bind(socket.get(), place.get(), TRUE, nullptr);
}

bool answers(std::string const& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), std::min(path.size() + 1, sizeof address.sun_path - 1));
    open::descriptor const socket{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    return ::connect(socket.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0;
}

std::string system_bus()
{
    char const* const said = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    std::string const address = said ? said : "unix:path=/run/dbus/system_bus_socket";
    std::string const start = "unix:path=";
    if (!address.starts_with(start))
        return {};
    return address.substr(start.size(), address.find_first_of(",;") - start.size());
}

bool has_line(std::string const& file, std::string const& line)
{
    std::ifstream lines{file};
    for (std::string one; std::getline(lines, one);)
        if (one == line)
            return true;
    return false;
}

} // namespace

findings ports(publisher::configuration const& from)
{
    // What our own publisher holds is in good hands.
    auto const status = publisher_status(500ms);
    auto const ours = status ? status->value("urls", nlohmann::json::object()).dump() : std::string{};
    findings all;
    auto const look = [&](char const* what, std::string const& address, int port, char const* key) {
        if (port == 0)
            return;
        auto const number = std::to_string(port);
        if (ours.find(":" + number) != std::string::npos)
            all.push_back({"ports", state::good, number + " (" + what + ") is the publisher's", ""});
        else if (can_listen_at(address, port))
            all.push_back({"ports", state::good, number + " (" + what + ") is free", ""});
        else
            all.push_back({"ports", state::note,
                           number + " (" + what + ") cannot be had at " + address + "; the next free one is taken",
                           "ss -tlnp shows who has it; " + std::string{key} + " in quillo.conf chooses another one"});
    };
    look("RTSP", from.address, rtsp_port(from), from.tls ? "port in [tls]" : "port in [network]");
    if (from.page)
        look("page", from.page_address, from.page_port, "port in [page]");
    return all;
}

findings firewall(publisher::configuration const& from)
{
    auto const port = std::to_string(rtsp_port(from));
    std::error_code none;
    if (has_line("/etc/ufw/ufw.conf", "ENABLED=yes"))
        return {{"firewall", state::note, "ufw is on",
                 "sudo ufw allow " + port + "/tcp; sudo ufw allow 5353/udp; watch over TCP"}};
    if (std::filesystem::exists("/run/firewalld", none))
        return {{"firewall", state::note, "firewalld is on",
                 "sudo firewall-cmd --permanent --add-port=" + port +
                     "/tcp --add-service=mdns; sudo firewall-cmd --reload; watch over TCP"}};
    if (std::filesystem::exists("/sys/module/nf_tables", none) ||
        std::filesystem::exists("/sys/module/ip_tables", none))
        return {
            {"firewall", state::note, "the kernel's packet filter is loaded; its rules are for root's eyes",
             "sudo nft list ruleset (or sudo iptables -S) shows whether TCP " + port + " and UDP 5353 may come in"}};
    return {{"firewall", state::good, "no packet filter is loaded", ""}};
}

findings interfaces(publisher::configuration const& from)
{
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0)
        return {
            {"interfaces", state::bad, "the system does not tell its addresses", "is this a restricted container?"}};
    std::unique_ptr<ifaddrs, releases<::freeifaddrs>> const list{first};
    findings all;
    bool reachable = false;
    for (auto const* one = list.get(); one; one = one->ifa_next) {
        if (!one->ifa_addr || !(one->ifa_flags & IFF_RUNNING) || (one->ifa_flags & IFF_LOOPBACK))
            continue;
        if (one->ifa_addr->sa_family != AF_INET && one->ifa_addr->sa_family != AF_INET6)
            continue;
        char text[INET6_ADDRSTRLEN] = {};
        void const* const bytes =
            one->ifa_addr->sa_family == AF_INET
                ? static_cast<void const*>(
                      &reinterpret_cast<sockaddr_in const*>(static_cast<void*>(one->ifa_addr))->sin_addr)
                : &reinterpret_cast<sockaddr_in6 const*>(static_cast<void*>(one->ifa_addr))->sin6_addr;
        ::inet_ntop(one->ifa_addr->sa_family, bytes, text, sizeof text);
        std::string const what = std::string{one->ifa_name} + " has " + text;
        bool const multicast = one->ifa_flags & IFF_MULTICAST;
        reachable = true;
        if (!from.allow.allow(std::string{text}))
            all.push_back({"interfaces", state::note, what + ", whose neighbours may not connect",
                           "to let them in, add their range to allow in [network] of quillo.conf"});
        else if (!multicast)
            all.push_back({"interfaces", state::note, what + ", without multicast: names are not announced there",
                           "receivers there need the whole address"});
        else
            all.push_back({"interfaces", state::good, what, ""});
    }
    if (!reachable)
        all.push_back({"interfaces", state::note, "no network: only this machine can watch", "plug one in"});
    return all;
}

findings names_on_the_network(publisher::configuration const& from)
{
    if (!from.announce)
        return {{"names", state::note, "announce is off in quillo.conf", "receivers need the whole address"}};
    bool const bus = answers(system_bus());
    bool const daemon = answers(avahi_socket);
    if (bus && daemon)
        return {{"names", state::good, "avahi-daemon announces", ""}};
    if (bus)
        return {{"names", state::bad, "D-Bus runs, but avahi-daemon does not: nothing is announced until it comes",
                 "sudo apt install avahi-daemon; sudo systemctl enable --now avahi-daemon"}};
    return {{"names", state::good, "no D-Bus and no avahi-daemon here: the publisher announces by itself", ""}};
}

} // namespace quillo::doctor
