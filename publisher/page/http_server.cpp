#include "publisher/page/http_server.h"

#include "publisher/live_socket.h"
#include "publisher/log.h"
#include "publisher/page/own_host.h"

#include <netinet/in.h>
#include <netinet/tcp.h>

#include <algorithm>
#include <stdexcept>

namespace quillo::publisher {

namespace {

constexpr char const* realm = "Quillo Transmit";
constexpr int acknowledged_within_s = 15;
constexpr int unsent_bytes = 16 * 1024;

std::string text(GSocketAddress* address)
{
    if (!address || !G_IS_INET_SOCKET_ADDRESS(address))
        return {};
    GInetAddress* const numeric = g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(address));
    return string_ptr{g_inet_address_to_string(numeric)}.get();
}

int port_of(GSocketAddress* address) { return g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(address)); }

object_ptr<SoupAuthDomain> lock_for(http_settings const& settings)
{
    auto domain = adopt<object_ptr<SoupAuthDomain>>(soup_auth_domain_digest_new("realm", realm, nullptr));
    soup_auth_domain_add_path(domain.get(), "/");
    auto* const credentials = new std::pair{
        settings.user, std::string{string_ptr{soup_auth_domain_digest_encode_password(settings.user.c_str(), realm,
                                                                                      settings.password.c_str())}
                                       .get()}};
    soup_auth_domain_digest_set_auth_callback(
        domain.get(),
        [](SoupAuthDomain*, SoupServerMessage*, char const* user, gpointer data) -> char* {
            auto const& [known, encoded] = *static_cast<std::pair<std::string, std::string>*>(data);
            return known == user ? g_strdup(encoded.c_str()) : nullptr;
        },
        credentials, [](gpointer data) { delete static_cast<std::pair<std::string, std::string>*>(data); });
    return domain;
}

object_ptr<GIOStream> secured(GSocketConnection* connected, GTlsCertificate* certificate)
{
    GError* problem = nullptr;
    auto secure =
        adopt<object_ptr<GIOStream>>(g_tls_server_connection_new(G_IO_STREAM(connected), certificate, &problem));
    error_ptr const error{problem};
    if (error)
        log::warning("page: no TLS: ", error->message);
    return secure;
}

bool wants_socket(SoupServerMessage* request)
{
    return soup_message_headers_header_contains(soup_server_message_get_request_headers(request), "Upgrade",
                                                "websocket");
}

} // namespace

http_server::http_server(GMainContext* context, http_settings settings, handlers what)
    : settings_(std::move(settings)), handlers_(std::move(what)), names_(own_names()),
      server_(soup_server_new("server-header", "Quillo-Transmit/" QUILLO_VERSION, nullptr)),
      service_(g_socket_service_new())
{
    if (!settings_.user.empty())
        soup_server_add_auth_domain(server_.get(), lock_for(settings_).get());
    soup_server_add_handler(
        server_.get(), nullptr,
        [](SoupServer*, SoupServerMessage* request, char const* path, GHashTable*, gpointer self) {
            static_cast<http_server*>(self)->handlers_.get(request, path);
        },
        this, nullptr);
    soup_server_add_websocket_handler(
        server_.get(), handlers_.socket_path.c_str(), nullptr, nullptr,
        [](SoupServer*, SoupServerMessage* request, char const*, SoupWebsocketConnection* socket, gpointer self) {
            static_cast<http_server*>(self)->keep_open(request);
            static_cast<http_server*>(self)->handlers_.socket(request, socket);
        },
        this, nullptr);
    auto const on_started = +[](SoupServer*, SoupServerMessage* request, gpointer self) {
        static_cast<http_server*>(self)->started(request);
    };
    g_signal_connect(server_.get(), "request-started", G_CALLBACK(on_started), this);
    auto const on_read = +[](SoupServer*, SoupServerMessage* request, gpointer self) {
        static_cast<http_server*>(self)->progress(request);
    };
    g_signal_connect(server_.get(), "request-read", G_CALLBACK(on_read), this);

    auto const on_incoming = +[](GSocketService*, GSocketConnection* connected, GObject*, gpointer self) -> gboolean {
        static_cast<http_server*>(self)->incoming(connected);
        return TRUE;
    };
    g_signal_connect(service_.get(), "incoming", G_CALLBACK(on_incoming), this);
    // Who comes while so many wait to be taken is kept waiting for a second by the system.
    g_socket_listener_set_backlog(G_SOCKET_LISTENER(service_.get()), backlog);
    // Accepting begins when all addresses are there: adding one breaks off what is being accepted.
    g_socket_service_stop(service_.get());
    listen();
    g_socket_service_start(service_.get());
    timer_ = loop_timer{context, std::chrono::milliseconds{250}, [this] { close_late(); }};
}

http_server::~http_server()
{
    g_socket_service_stop(service_.get());
    g_socket_listener_close(G_SOCKET_LISTENER(service_.get()));
    soup_server_disconnect(server_.get());
    for (auto const& [address, one] : open_)
        g_socket_close(one.socket.get(), nullptr);
    while (!open_.empty()) {
        // Those that outlive us do not call back.
        auto const last = open_.begin();
        g_object_set_data(G_OBJECT(last->first), "quillo-server", nullptr);
        open_.erase(last);
    }
}

bool http_server::listen_at(std::string const& address, int port)
{
    auto const at = adopt<object_ptr<GSocketAddress>>(
        g_inet_socket_address_new_from_string(address.c_str(), static_cast<guint>(port)));
    if (!at)
        throw std::runtime_error{"page: no address: " + address};
    GSocketAddress* effective = nullptr;
    GError* problem = nullptr;
    bool const listens =
        g_socket_listener_add_address(G_SOCKET_LISTENER(service_.get()), at.get(), G_SOCKET_TYPE_STREAM,
                                      G_SOCKET_PROTOCOL_TCP, nullptr, &effective, &problem);
    auto const bound = adopt<object_ptr<GSocketAddress>>(effective);
    error_ptr const error{problem};
    if (listens)
        port_ = port_of(bound.get());
    else
        log::debug("page: ", address, " port ", port, ": ", error->message);
    return listens;
}

void http_server::listen()
{
    bool const local = settings_.address == "localhost";
    int const last = settings_.port == 0 ? 0 : std::min(settings_.port + ports_to_try - 1, 65535);
    for (int port = settings_.port; port <= last; ++port) {
        if (!listen_at(local ? "127.0.0.1" : settings_.address, port))
            continue;
        // A machine without IPv6 is reached by the other address alone.
        if (local)
            listen_at("::1", port_);
        if (settings_.port != 0 && port_ != settings_.port)
            log::warning("page: port ", settings_.port, " is taken, using ", port_);
        return;
    }
    throw std::runtime_error{"page: no port free at " + settings_.address + " from " + std::to_string(settings_.port) +
                             " on"};
}

void http_server::incoming(GSocketConnection* connected)
{
    auto remote = adopt<object_ptr<GSocketAddress>>(g_socket_connection_get_remote_address(connected, nullptr));
    auto const local = adopt<object_ptr<GSocketAddress>>(g_socket_connection_get_local_address(connected, nullptr));
    if (!remote || !local)
        return;
    if (open_.size() >= settings_.max_connections) {
        log::warning("page: more than ", settings_.max_connections, " connections: ", text(remote.get()),
                     " was turned away");
        return;
    }
    if (settings_.is_allowed && !settings_.is_allowed(text(remote.get()))) {
        log::warning("page: ", text(remote.get()), " was turned away");
        return;
    }
    auto const stream =
        settings_.certificate ? secured(connected, settings_.certificate.get()) : retain_object(G_IO_STREAM(connected));
    if (!stream)
        return;

    GSocket* const socket = g_socket_connection_get_socket(connected);
    make_live(socket);
    // What cannot be sent yet waits with us, where the next picture takes its place.
    g_socket_set_option(socket, IPPROTO_TCP, TCP_NOTSENT_LOWAT, unsent_bytes, nullptr);
    g_socket_set_option(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, acknowledged_within_s * 1000, nullptr);
    open_.emplace(remote.get(), connection{retain_object(socket), clock::now() + settings_.request_time});
    // The address lives as long as the connection, and takes it off the list when it goes.
    g_object_set_data_full(G_OBJECT(connected), "quillo-address", remote.get(), g_object_unref);
    GSocketAddress* const key = remote.release();
    g_object_set_data(G_OBJECT(key), "quillo-server", this);
    auto const gone = [](gpointer address, GObject*) {
        auto* const server = static_cast<http_server*>(g_object_get_data(G_OBJECT(address), "quillo-server"));
        if (server)
            server->open_.erase(static_cast<GSocketAddress*>(address));
    };
    g_object_weak_ref(G_OBJECT(connected), gone, key);

    GError* problem = nullptr;
    soup_server_accept_iostream(server_.get(), stream.get(), local.get(), key, &problem);
    error_ptr const error{problem};
}

http_server::connection* http_server::of(SoupServerMessage* request)
{
    auto const found = open_.find(soup_server_message_get_remote_address(request));
    return found == open_.end() ? nullptr : &found->second;
}

void http_server::progress(SoupServerMessage* request)
{
    if (auto* const from = of(request))
        from->deadline = clock::now() + settings_.answer_time;
}

void http_server::keep_open(SoupServerMessage* request)
{
    if (auto* const from = of(request))
        from->deadline.reset();
}

void http_server::started(SoupServerMessage* request)
{
    soup_message_body_set_accumulate(soup_server_message_get_request_body(request), FALSE);
    // Not an early handler, which libsoup leaves out behind a password.
    auto const on_headers = +[](SoupServerMessage* of, gpointer self) { static_cast<http_server*>(self)->check(of); };
    g_signal_connect(request, "got-headers", G_CALLBACK(on_headers), this);
}

void http_server::check(SoupServerMessage* request)
{
    auto* const response = soup_server_message_get_response_headers(request);
    soup_message_headers_replace(response, "Connection", "close");
    soup_message_headers_replace(response, "X-Content-Type-Options", "nosniff");
    soup_message_headers_replace(response, "Cross-Origin-Resource-Policy", "same-origin");
    soup_message_headers_replace(response, "Referrer-Policy", "no-referrer");
    soup_message_headers_replace(response, "Cache-Control", "no-store");

    auto* const asked = soup_server_message_get_request_headers(request);
    bool const endless = soup_message_headers_get_encoding(asked) == SOUP_ENCODING_CHUNKED;
    if (endless || soup_message_headers_get_content_length(asked) > static_cast<goffset>(max_body)) {
        soup_server_message_set_status(request, SOUP_STATUS_REQUEST_ENTITY_TOO_LARGE, nullptr);
        // Who waits for leave to go on is told no; who sends it all the same is not listened to.
        if (!(soup_message_headers_get_expectations(asked) & SOUP_EXPECTATION_CONTINUE))
            if (auto* const from = of(request))
                g_socket_shutdown(from->socket.get(), TRUE, FALSE, nullptr);
        return;
    }

    std::string const host = header(request, "Host");
    if (!is_own_host(host, names_, text(soup_server_message_get_local_address(request)))) {
        answer(request, SOUP_STATUS_FORBIDDEN, "text/plain", "this machine is not called that\n");
        return;
    }
    std::string const origin = header(request, "Origin");
    bool const foreign =
        header(request, "Sec-Fetch-Site") == "cross-site" && header(request, "Sec-Fetch-Mode") != "navigate";
    if (foreign || (!origin.empty() && !is_own_origin(origin, host))) {
        answer(request, SOUP_STATUS_FORBIDDEN, "text/plain", "not for other pages\n");
        return;
    }
    if (soup_server_message_get_status(request) != 0)
        return; // a password is asked for
    std::string_view const method = soup_server_message_get_method(request);
    if (method != "GET" && method != "HEAD") {
        soup_message_headers_replace(response, "Allow", "GET, HEAD");
        answer(request, SOUP_STATUS_METHOD_NOT_ALLOWED, "text/plain", "GET and HEAD only\n");
        return;
    }
    char const* const path = g_uri_get_path(soup_server_message_get_uri(request));
    if (handlers_.socket_path == path && !wants_socket(request))
        answer(request, SOUP_STATUS_BAD_REQUEST, "text/plain", "WebSocket only\n");
}

void http_server::close_late()
{
    auto const now = clock::now();
    for (auto& [address, one] : open_)
        if (one.deadline && *one.deadline < now) {
            log::debug("page: ", text(address), " took too long");
            one.deadline.reset();
            g_socket_shutdown(one.socket.get(), TRUE, TRUE, nullptr);
        }
}

void answer(SoupServerMessage* request, unsigned status, char const* type, std::string_view body)
{
    soup_server_message_set_status(request, status, nullptr);
    soup_server_message_set_response(request, type, SOUP_MEMORY_COPY, body.data(), body.size());
}

std::string header(SoupServerMessage* request, char const* name)
{
    char const* const value = soup_message_headers_get_list(soup_server_message_get_request_headers(request), name);
    return value ? value : "";
}

std::string remote_address(SoupServerMessage* request) { return text(soup_server_message_get_remote_address(request)); }

} // namespace quillo::publisher
