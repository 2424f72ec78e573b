// Names on the local network: sources are announced as DNS-SD services of the type _rtsp._tcp, and found again.
//
// Works through avahi-daemon. Where there is no D-Bus to reach one, this process answers on the network by itself;
// where there is D-Bus but no daemon yet, it waits for the daemon.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quillo::discovery {

struct service
{
    std::string name; // wished for; at most 63 bytes of UTF-8, see instance_name
    std::uint16_t port = 0;
    std::map<std::string, std::string> txt; // key and value together at most 254 bytes, more is cut off
};

// "MACHINE (SOURCE)", cut to what a name on the network may have, between characters. MACHINE is given without domain.
std::string instance_name(std::string_view machine, std::string_view source);

// Keeps services on the network for as long as it lives, whatever becomes of the daemon and the addresses. Thread-safe.
class announcer
{
  public:
    using token = std::uint64_t;
    // Called on the announcer's thread when the service can be found, with its name: not the one wished for when
    // another service has that. Called again whenever the name changes.
    using named = std::function<void(std::string const& name)>;
    // Called on the announcer's thread with a line for the log when something stands in the way, or no longer does.
    using trouble = std::function<void(std::string const& line)>;

    // Throws std::runtime_error when the system gives no thread or descriptors.
    explicit announcer(trouble report = {});
    ~announcer(); // withdraws everything
    announcer(announcer const&) = delete;
    announcer& operator=(announcer const&) = delete;

    // Both return at once.
    token announce(service, named on_named = {});
    void withdraw(token);

  private:
    class worker;
    std::unique_ptr<worker> work;
};

struct found
{
    std::string name;
    std::string host;                   // with domain
    std::vector<std::string> addresses; // IPv4 first; link-local IPv6 with its zone
    std::uint16_t port = 0;
    std::map<std::string, std::string> txt;
};

enum class until { time_is_up, first_is_found };

// What is on the network now, by name; takes the given time at most. Throws std::runtime_error when the network cannot
// be asked.
std::vector<found> browse(std::chrono::milliseconds duration, until = until::time_is_up);

} // namespace quillo::discovery
