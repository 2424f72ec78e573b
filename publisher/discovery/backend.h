// One way to the network: the daemon, or this process itself. Used on one thread, the one that runs the poll.
#pragma once

#include "publisher/discovery/avahi_faces.h"
#include "publisher/discovery/discovery.h"

#include <functional>
#include <memory>
#include <string>

namespace quillo::discovery {

inline constexpr char const* service_type = "_rtsp._tcp";

// A service on the network, or on its way there; gone when this is destroyed.
class registration
{
  public:
    virtual ~registration() = default;
    virtual AvahiEntryGroupState state() const = 0;
};

// A search under way.
class search
{
  public:
    virtual ~search() = default;
};

// A service seen on one interface.
struct sighting
{
    std::string name;
    std::string host;
    AvahiAddress address;
    AvahiIfIndex interface;
    std::uint16_t port;
    std::map<std::string, std::string> txt;
};

class backend
{
  public:
    virtual ~backend() = default;
    virtual condition state() const = 0;
    // Takes another name for the machine, when its own is taken.
    virtual void rename_machine() = 0;
    // While ready. Registrations and searches must go before the backend does.
    virtual std::unique_ptr<registration> add(service const&, std::string const& name) = 0;
    virtual std::unique_ptr<search> find(std::function<void(sighting const&)> on_seen) = 0;
};

// Null when there is no D-Bus. Waiting while there is no daemon.
std::unique_ptr<backend> open_client(AvahiPoll const*, role);
// Null when the system gives no sockets.
std::unique_ptr<backend> open_own(AvahiPoll const*, role);

} // namespace quillo::discovery
