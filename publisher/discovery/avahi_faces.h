// Avahi's objects with owners, and its two faces, the daemon's client and the responder in this process, under the same
// names: what is written for one serves for both.
#pragma once

#include <avahi-client/client.h>
#include <avahi-client/lookup.h>
#include <avahi-client/publish.h>
#include <avahi-common/alternative.h>
#include <avahi-common/error.h>
#include <avahi-common/malloc.h>
#include <avahi-common/simple-watch.h>
#include <avahi-core/core.h>
#include <avahi-core/lookup.h>
#include <avahi-core/publish.h>

#include <memory>

namespace quillo::discovery {

template <auto Release>
struct released_by
{
    template <class T>
    void operator()(T* object) const
    {
        Release(object);
    }
};

using poll_ptr = std::unique_ptr<AvahiSimplePoll, released_by<avahi_simple_poll_free>>;
using text_list_ptr = std::unique_ptr<AvahiStringList, released_by<avahi_string_list_free>>;

// One who only asks puts nothing on the network: not even its machine's name, which somebody else may have.
enum class role { announces, asks };

enum class condition {
    waiting, // for the daemon, or for the machine's own name to be settled
    ready,
    taken, // the machine's own name is in use elsewhere
    lost
};

struct client_face
{
    using responder = AvahiClient;
    using group = AvahiEntryGroup;
    using browser = AvahiServiceBrowser;
    using resolver = AvahiServiceResolver;
    using group_ptr = std::unique_ptr<group, released_by<avahi_entry_group_free>>;
    using browser_ptr = std::unique_ptr<browser, released_by<avahi_service_browser_free>>;
    using resolver_ptr = std::unique_ptr<resolver, released_by<avahi_service_resolver_free>>;
    using responder_ptr = std::unique_ptr<responder, released_by<avahi_client_free>>;

    static responder* open(AvahiPoll const* poll, role, condition* state)
    {
        int error = 0;
        return avahi_client_new(
            poll, AVAHI_CLIENT_NO_FAIL,
            [](AvahiClient*, AvahiClientState now, void* user) {
                auto& seen = *static_cast<condition*>(user);
                switch (now) {
                case AVAHI_CLIENT_S_RUNNING:
                    seen = condition::ready;
                    break;
                case AVAHI_CLIENT_S_COLLISION: // the daemon finds another name by itself
                case AVAHI_CLIENT_S_REGISTERING:
                case AVAHI_CLIENT_CONNECTING:
                    seen = condition::waiting;
                    break;
                case AVAHI_CLIENT_FAILURE:
                    seen = condition::lost;
                }
            },
            state, &error);
    }
    static void rename(responder*) {}

    static group* open_group(responder* from, AvahiEntryGroupState* state)
    {
        return avahi_entry_group_new(
            from,
            [](AvahiEntryGroup*, AvahiEntryGroupState now, void* user) {
                *static_cast<AvahiEntryGroupState*>(user) = now;
            },
            state);
    }
    static int add(responder*, group* to, AvahiProtocol protocol, char const* name, char const* type,
                   std::uint16_t port, AvahiStringList* txt)
    {
        int const error = avahi_entry_group_add_service_strlst(to, AVAHI_IF_UNSPEC, protocol, AvahiPublishFlags{}, name,
                                                               type, nullptr, nullptr, port, txt);
        return error < 0 ? error : avahi_entry_group_commit(to);
    }
    static browser* open_browser(responder* from, char const* type, AvahiServiceBrowserCallback call, void* user)
    {
        return avahi_service_browser_new(from, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, type, nullptr, AvahiLookupFlags{},
                                         call, user);
    }
    static resolver* open_resolver(responder* from, AvahiIfIndex interface, AvahiProtocol protocol, char const* name,
                                   char const* type, char const* domain, AvahiServiceResolverCallback call, void* user)
    {
        return avahi_service_resolver_new(from, interface, protocol, name, type, domain, protocol, AvahiLookupFlags{},
                                          call, user);
    }
};

struct own_face
{
    using responder = AvahiServer;
    using group = AvahiSEntryGroup;
    using browser = AvahiSServiceBrowser;
    using resolver = AvahiSServiceResolver;
    using group_ptr = std::unique_ptr<group, released_by<avahi_s_entry_group_free>>;
    using browser_ptr = std::unique_ptr<browser, released_by<avahi_s_service_browser_free>>;
    using resolver_ptr = std::unique_ptr<resolver, released_by<avahi_s_service_resolver_free>>;
    using responder_ptr = std::unique_ptr<responder, released_by<avahi_server_free>>;

    static responder* open(AvahiPoll const* poll, role as, condition* state)
    {
        AvahiServerConfig settings;
        avahi_server_config_init(&settings);
        settings.publish_addresses = as == role::announces;
        settings.publish_hinfo = 0;
        settings.publish_workstation = 0;
        int error = 0;
        auto* const opened = avahi_server_new(
            poll, &settings,
            [](AvahiServer*, AvahiServerState now, void* user) {
                auto& seen = *static_cast<condition*>(user);
                switch (now) {
                case AVAHI_SERVER_RUNNING:
                    seen = condition::ready;
                    break;
                case AVAHI_SERVER_COLLISION:
                    seen = condition::taken;
                    break;
                case AVAHI_SERVER_INVALID:
                case AVAHI_SERVER_REGISTERING:
                    seen = condition::waiting;
                    break;
                case AVAHI_SERVER_FAILURE:
                    seen = condition::lost;
                }
            },
            state, &error);
        avahi_server_config_free(&settings);
        return opened;
    }
    static void rename(responder* which)
    {
        char* const next = avahi_alternative_host_name(avahi_server_get_host_name(which));
        avahi_server_set_host_name(which, next);
        avahi_free(next);
    }

    static group* open_group(responder* from, AvahiEntryGroupState* state)
    {
        return avahi_s_entry_group_new(
            from,
            [](AvahiServer*, AvahiSEntryGroup*, AvahiEntryGroupState now, void* user) {
                *static_cast<AvahiEntryGroupState*>(user) = now;
            },
            state);
    }
    static int add(responder* from, group* to, AvahiProtocol protocol, char const* name, char const* type,
                   std::uint16_t port, AvahiStringList* txt)
    {
        int const error = avahi_server_add_service_strlst(from, to, AVAHI_IF_UNSPEC, protocol, AvahiPublishFlags{},
                                                          name, type, nullptr, nullptr, port, txt);
        return error < 0 ? error : avahi_s_entry_group_commit(to);
    }
    static browser* open_browser(responder* from, char const* type, AvahiSServiceBrowserCallback call, void* user)
    {
        return avahi_s_service_browser_new(from, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, type, nullptr, AvahiLookupFlags{},
                                           call, user);
    }
    static resolver* open_resolver(responder* from, AvahiIfIndex interface, AvahiProtocol protocol, char const* name,
                                   char const* type, char const* domain, AvahiSServiceResolverCallback call, void* user)
    {
        return avahi_s_service_resolver_new(from, interface, protocol, name, type, domain, protocol, AvahiLookupFlags{},
                                            call, user);
    }
};

} // namespace quillo::discovery
