#include "publisher/discovery/backend.h"
#include "publisher/discovery/discovery.h"

#include <avahi-core/log.h>
#include <net/if.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <tuple>

namespace quillo::discovery {

using steady = std::chrono::steady_clock;

namespace {

constexpr std::chrono::milliseconds for_its_other_addresses{100};

bool is_link_local(AvahiAddress const& address)
{
    auto const* const bytes = address.data.ipv6.address;
    return address.proto == AVAHI_PROTO_INET6 && bytes[0] == 0xFE && (bytes[1] & 0xC0) == 0x80;
}

std::string to_text(sighting const& seen)
{
    std::array<char, AVAHI_ADDRESS_STR_MAX> text;
    std::string result = avahi_address_snprint(text.data(), text.size(), &seen.address);
    std::array<char, IF_NAMESIZE> zone;
    if (is_link_local(seen.address) && ::if_indextoname(static_cast<unsigned>(seen.interface), zone.data()))
        result += std::string{"%"} + zone.data();
    return result;
}

// IPv4, IPv6, link-local IPv6; in each the machine's own loopback last.
auto rank(std::string const& address)
{
    bool const six = address.find(':') != std::string::npos;
    bool const loopback = address.starts_with("127.") || address == "::1";
    return std::tuple{six, address.find('%') != std::string::npos, loopback, address};
}

} // namespace

std::vector<found> browse(std::chrono::milliseconds duration, until what)
{
    poll_ptr const poll{avahi_simple_poll_new()};
    if (!poll)
        throw std::runtime_error{"no event loop for DNS-SD"};
    avahi_set_log_function([](AvahiLogLevel, char const*) {});

    auto const* const events = avahi_simple_poll_get(poll.get());
    auto network = open_client(events, role::asks);
    if (!network || network->state() != condition::ready) {
        network.reset();
        network = open_own(events, role::asks);
    }
    if (!network)
        throw std::runtime_error{"the network cannot be asked: neither avahi-daemon nor multicast sockets are there"};

    auto end = steady::now() + duration;
    std::map<std::string, found> all;
    auto const searching = network->find([&](sighting const& seen) {
        if (all.empty() && what == until::first_is_found)
            end = std::min(end, steady::now() + for_its_other_addresses);
        auto& one = all[seen.name];
        one.name = seen.name;
        one.host = seen.host;
        one.port = seen.port;
        one.txt = seen.txt;
        if (auto const address = to_text(seen);
            std::find(one.addresses.begin(), one.addresses.end(), address) == one.addresses.end())
            one.addresses.push_back(address);
    });
    for (auto now = steady::now(); now < end; now = steady::now())
        avahi_simple_poll_iterate(poll.get(),
                                  static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(end - now).count()));

    std::vector<found> result;
    for (auto& [name, one] : all) {
        std::sort(one.addresses.begin(), one.addresses.end(),
                  [](auto const& a, auto const& b) { return rank(a) < rank(b); });
        result.push_back(std::move(one));
    }
    return result;
}

} // namespace quillo::discovery
