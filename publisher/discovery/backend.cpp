#include "publisher/discovery/backend.h"

#include "publisher/discovery/text_records.h"

#include <ifaddrs.h>
#include <net/if.h>

#include <list>
#include <utility>

namespace quillo::discovery {

namespace {

// Over IPv4 alone where the machine has it: some receivers connect to the first address they are told, and drop the
// zone of a link-local IPv6 one.
AvahiProtocol announced_protocol()
{
    ifaddrs* all = nullptr;
    if (::getifaddrs(&all) != 0)
        return AVAHI_PROTO_UNSPEC;
    std::unique_ptr<ifaddrs, released_by<::freeifaddrs>> const owner{all};
    for (auto const* one = all; one; one = one->ifa_next)
        if (one->ifa_addr && one->ifa_addr->sa_family == AF_INET && !(one->ifa_flags & IFF_LOOPBACK))
            return AVAHI_PROTO_INET;
    return AVAHI_PROTO_UNSPEC;
}

template <class Face>
class registration_of : public registration
{
  public:
    registration_of(typename Face::responder* with, service const& what, std::string const& name)
        : group(Face::open_group(with, &now))
    {
        if (!group)
            return;
        int const error = Face::add(with, group.get(), announced_protocol(), name.c_str(), service_type, what.port,
                                    to_list(what.txt).get());
        if (error == AVAHI_ERR_COLLISION)
            now = AVAHI_ENTRY_GROUP_COLLISION; // with a service of this machine
        else if (error < 0)
            now = AVAHI_ENTRY_GROUP_FAILURE;
    }
    AvahiEntryGroupState state() const override { return group ? now : AVAHI_ENTRY_GROUP_FAILURE; }

  private:
    AvahiEntryGroupState now = AVAHI_ENTRY_GROUP_UNCOMMITED; // written by the group's callback
    typename Face::group_ptr group;
};

template <class Face>
class search_of : public search
{
  public:
    search_of(typename Face::responder* with, std::function<void(sighting const&)> call)
        : responder(with), on_seen(std::move(call)),
          browser(Face::open_browser(
              with, service_type,
              [](auto*, AvahiIfIndex interface, AvahiProtocol protocol, AvahiBrowserEvent event, char const* name,
                 char const* type, char const* domain, AvahiLookupResultFlags, void* user) {
                  if (event == AVAHI_BROWSER_NEW)
                      static_cast<search_of*>(user)->resolve(interface, protocol, name, type, domain);
              },
              this))
    {
    }

  private:
    void resolve(AvahiIfIndex interface, AvahiProtocol protocol, char const* name, char const* type, char const* domain)
    {
        resolvers.emplace_back(Face::open_resolver(
            responder, interface, protocol, name, type, domain,
            [](auto*, AvahiIfIndex seen_on, AvahiProtocol, AvahiResolverEvent event, char const* service_name,
               char const*, char const*, char const* host, AvahiAddress const* address, std::uint16_t port,
               AvahiStringList* txt, AvahiLookupResultFlags, void* user) {
                if (event == AVAHI_RESOLVER_FOUND && address)
                    static_cast<search_of*>(user)->on_seen(
                        {service_name, host, *address, seen_on, port, from_list(txt)});
            },
            this));
    }

    typename Face::responder* const responder;
    std::function<void(sighting const&)> const on_seen;
    std::list<typename Face::resolver_ptr> resolvers; // some may be null
    typename Face::browser_ptr browser;
};

template <class Face>
class backend_of : public backend
{
  public:
    backend_of(AvahiPoll const* poll, role as) : responder(Face::open(poll, as, &now)) {}
    bool opened() const { return responder != nullptr; }

    condition state() const override { return now; }
    void rename_machine() override { Face::rename(responder.get()); }
    std::unique_ptr<registration> add(service const& what, std::string const& name) override
    {
        return std::make_unique<registration_of<Face>>(responder.get(), what, name);
    }
    std::unique_ptr<search> find(std::function<void(sighting const&)> on_seen) override
    {
        return std::make_unique<search_of<Face>>(responder.get(), std::move(on_seen));
    }

  private:
    condition now = condition::waiting; // written by the responder's callback
    typename Face::responder_ptr responder;
};

template <class Face>
std::unique_ptr<backend> open(AvahiPoll const* poll, role as)
{
    auto opened = std::make_unique<backend_of<Face>>(poll, as);
    if (!opened->opened())
        return nullptr;
    return opened;
}

} // namespace

std::unique_ptr<backend> open_client(AvahiPoll const* poll, role as) { return open<client_face>(poll, as); }

std::unique_ptr<backend> open_own(AvahiPoll const* poll, role as) { return open<own_face>(poll, as); }

} // namespace quillo::discovery
