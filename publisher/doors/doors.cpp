#include "publisher/doors/doors.h"

#include "publisher/config/configuration.h"
#include "publisher/log.h"

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>

namespace quillo::publisher {

namespace {

constexpr std::size_t max_suspects = 256;
constexpr int established = 1; // TCP_ESTABLISHED: glibc's and the kernel's headers of that name cannot be had together
constexpr int closed = 7;      // TCP_CLOSE

object_ptr<GInetAddress> address_of(GSocketAddress* end)
{
    if (!end || !G_IS_INET_SOCKET_ADDRESS(end))
        return nullptr;
    return retain_object(g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(end)));
}

std::string text(GInetAddress* address) { return string_ptr{g_inet_address_to_string(address)}.get(); }

tcp_info state_of(GSocket* socket)
{
    tcp_info info{};
    socklen_t size = sizeof info;
    if (g_socket_is_closed(socket) || ::getsockopt(g_socket_get_fd(socket), IPPROTO_TCP, TCP_INFO, &info, &size) != 0)
        info.tcpi_state = closed;
    return info;
}

// Its own thread sees the end and lets go of it.
void shut(GSocket* socket) { ::shutdown(g_socket_get_fd(socket), SHUT_RDWR); }

} // namespace

void doors::set(door_settings settings)
{
    std::lock_guard const lock{mutex_};
    settings_ = std::move(settings);
}

void doors::forget_gone()
{
    // One whose other end has gone is soon let go of, but not at once.
    std::erase_if(visitors_, [](visitor const& one) {
        auto const socket = one.socket.lock();
        return !socket || state_of(socket.get()).tcpi_state != established;
    });
}

bool doors::admit(GSocket* connection)
{
    auto const remote_end = adopt<object_ptr<GSocketAddress>>(g_socket_get_remote_address(connection, nullptr));
    auto const local_end = adopt<object_ptr<GSocketAddress>>(g_socket_get_local_address(connection, nullptr));
    auto const remote = address_of(remote_end.get());
    auto const local = address_of(local_end.get());
    if (!remote || !local)
        return false;
    std::string const from = text(remote.get());

    std::lock_guard const lock{mutex_};
    // This machine may also come by its public address.
    if (!settings_.allow.allow(remote.get()) && !g_inet_address_equal(remote.get(), local.get())) {
        ++counts_.strangers;
        log::warning("refused a connection from ", from, ": not among \"", settings_.allow.text(),
                     "\"; whoever may come is said by allow in [network] of quillo.conf");
        return false;
    }
    auto const now = steady::now();
    if (auto const* const known = suspected(from, now); known && known->wrong >= tries) {
        ++counts_.locked_out;
        log::warning("refused a connection from ", from, ": ", known->wrong, " wrong passwords, wait a minute");
        return false;
    }
    forget_gone();
    auto const same = static_cast<std::size_t>(
        std::count_if(visitors_.begin(), visitors_.end(), [&](visitor const& one) { return one.address == from; }));
    if (visitors_.size() >= settings_.connections || same >= settings_.connections_per_address) {
        ++counts_.too_many;
        log::warning("refused a connection from ", from, ": there are ", visitors_.size(), ", ", same,
                     " of them from there; more are allowed by connections and connections-per-address in [limits] "
                     "of quillo.conf");
        return false;
    }
    visitors_.push_back({weak_object{connection}, from});
    return true;
}

doors::visitor* doors::find(GSocket* connection)
{
    auto const one = std::find_if(visitors_.begin(), visitors_.end(),
                                  [&](visitor const& who) { return who.socket.lock().get() == connection; });
    return one == visitors_.end() ? nullptr : &*one;
}

void doors::heard(GSocket* connection, bool plays)
{
    std::lock_guard const lock{mutex_};
    auto* const who = find(connection);
    if (!who)
        return;
    who->last_request = steady::now();
    who->bytes = state_of(connection).tcpi_bytes_received;
    who->plays = who->plays || plays;
}

doors::suspect* doors::suspected(std::string const& address, steady::time_point now)
{
    std::erase_if(suspects_, [&](suspect const& one) { return now - one.last >= lock_time; });
    auto const known =
        std::find_if(suspects_.begin(), suspects_.end(), [&](suspect const& one) { return one.address == address; });
    return known == suspects_.end() ? nullptr : &*known;
}

void doors::wrong_password(GSocket* connection)
{
    std::lock_guard const lock{mutex_};
    ++counts_.wrong_password;
    auto const* const who = find(connection);
    if (!who)
        return;
    auto const now = steady::now();
    auto* known = suspected(who->address, now);
    if (!known && suspects_.size() < max_suspects)
        known = &suspects_.emplace_back(suspect{who->address, 0, now});
    if (known) {
        ++known->wrong;
        known->last = now;
    }
    log::warning("wrong user or password from ", who->address);
    if (known && known->wrong >= tries)
        shut(connection);
}

void doors::right_password(GSocket* connection)
{
    std::lock_guard const lock{mutex_};
    if (auto const* const who = find(connection))
        std::erase_if(suspects_, [&](suspect const& one) { return one.address == who->address; });
}

void doors::look_around(steady::time_point now)
{
    std::lock_guard const lock{mutex_};
    forget_gone();
    for (auto& one : visitors_) {
        auto const socket = one.socket.lock();
        if (!socket)
            continue;
        auto const bytes = state_of(socket.get()).tcpi_bytes_received;
        bool const oversized = bytes - one.bytes > settings_.request_size;
        bool const silent = !one.plays && now - one.last_request > settings_.request_time;
        one.bytes = bytes;
        if (!oversized && !silent)
            continue;
        ++(oversized ? counts_.oversized : counts_.silent);
        log::notice("ended the connection from ", one.address,
                    oversized ? ": it sends more than requests" : ": it asks for nothing");
        shut(socket.get());
    }
}

void doors::shut_all()
{
    std::lock_guard const lock{mutex_};
    for (auto const& one : visitors_)
        if (auto const socket = one.socket.lock())
            shut(socket.get());
}

door_counts doors::counts() const
{
    std::lock_guard const lock{mutex_};
    return counts_;
}

door_settings door_settings_of(configuration const& from)
{
    return {from.allow, static_cast<std::size_t>(from.connections),
            static_cast<std::size_t>(from.connections_per_address), static_cast<std::uint64_t>(from.request_size),
            from.request_time};
}

} // namespace quillo::publisher
