#include "publisher/rtsp_server.h"

#include "publisher/log.h"

#include <algorithm>
#include <stdexcept>

namespace quillo::publisher {

namespace {

constexpr int client_threads = 4;
constexpr int backlog = 16;

// Not for the whole world: this machine, the private networks, and links without a router.
bool is_near(GInetAddress* address)
{
    if (g_inet_address_get_is_loopback(address) || g_inet_address_get_is_link_local(address) ||
        g_inet_address_get_is_site_local(address))
        return true;
    guint8 const* const bytes = g_inet_address_to_bytes(address);
    if (g_inet_address_get_family(address) == G_SOCKET_FAMILY_IPV4)
        return false;
    if ((bytes[0] & 0xFE) == 0xFC) // unique local
        return true;
    static constexpr guint8 mapped[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    if (!std::equal(std::begin(mapped), std::end(mapped), bytes))
        return false;
    auto const v4 = adopt<object_ptr<GInetAddress>>(g_inet_address_new_from_bytes(bytes + 12, G_SOCKET_FAMILY_IPV4));
    return is_near(v4.get());
}

std::string text(GSocketAddress* address)
{
    if (!address || !G_IS_INET_SOCKET_ADDRESS(address))
        return {};
    return string_ptr{g_inet_address_to_string(g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(address)))}
        .get();
}

bool comes_from_near(GstRTSPClient* client)
{
    GstRTSPConnection* const connection = gst_rtsp_client_get_connection(client);
    GSocket* const socket = connection ? gst_rtsp_connection_get_read_socket(connection) : nullptr;
    if (!socket)
        return false;
    auto const remote = adopt<object_ptr<GSocketAddress>>(g_socket_get_remote_address(socket, nullptr));
    auto const local = adopt<object_ptr<GSocketAddress>>(g_socket_get_local_address(socket, nullptr));
    if (!remote || !G_IS_INET_SOCKET_ADDRESS(remote.get()))
        return false;
    return is_near(g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(remote.get()))) ||
           text(remote.get()) == text(local.get()); // this machine by its public address
}

void on_play(GstRTSPClient*, GstRTSPContext* request, gpointer)
{
    viewer* const who = request->media ? viewer_of(request->media) : nullptr;
    if (!who)
        return;
    if (request->sessmedia)
        if (auto* const transport = gst_rtsp_session_media_get_transport(request->sessmedia, 0)) {
            auto const* const chosen = gst_rtsp_stream_transport_get_transport(transport);
            who->who().set_transport(chosen->lower_transport == GST_RTSP_LOWER_TRANS_TCP ? "TCP" : "UDP");
        }
    log::info(who->who().path(), ' ', who->who().mount(), ": ", who->who().address(), " watches over ",
              who->who().transport(), " (", who->who().agent(), ')');
    who->play();
}

GstRTSPStatusCode refuse_strangers(GstRTSPClient* client, GstRTSPContext*, gpointer)
{
    return comes_from_near(client) ? GST_RTSP_STS_OK : GST_RTSP_STS_FORBIDDEN;
}

void on_client(GstRTSPServer*, GstRTSPClient* client, gpointer)
{
    for (char const* const request : {"pre-options-request", "pre-describe-request", "pre-setup-request"})
        g_signal_connect(client, request, G_CALLBACK(refuse_strangers), nullptr);
    g_signal_connect(client, "play-request", G_CALLBACK(on_play), nullptr);
}

} // namespace

rtsp_server::rtsp_server(rtsp_settings const& settings, std::shared_ptr<receivers> all)
    : all_(std::move(all)), context_(g_main_context_new()), loop_(g_main_loop_new(context_.get(), FALSE)),
      server_(gst_rtsp_server_new()), points_(gst_rtsp_server_get_mount_points(server_.get()))
{
    auto const threads = adopt<object_ptr<GstRTSPThreadPool>>(gst_rtsp_server_get_thread_pool(server_.get()));
    gst_rtsp_thread_pool_set_max_threads(threads.get(), client_threads);
    gst_rtsp_server_set_backlog(server_.get(), backlog);
    g_signal_connect(server_.get(), "client-connected", G_CALLBACK(on_client), nullptr);
    listen(settings);
    thread_ = std::thread{[this] { run(); }};
}

rtsp_server::~rtsp_server()
{
    for (auto const& who : all_->all())
        who->end();
    if (!all_->wait_until_empty(patience))
        log::warning("some receivers did not end in time");
    // Connections that never asked for anything.
    using filter = GstRTSPFilterResult (*)(GstRTSPServer*, GstRTSPClient*, gpointer);
    filter const everyone = [](GstRTSPServer*, GstRTSPClient*, gpointer) { return GST_RTSP_FILTER_REMOVE; };
    gst_rtsp_server_client_filter(server_.get(), everyone, nullptr);
    // From within the loop, which may not have begun yet.
    g_source_ptr const quit{g_idle_source_new()};
    g_source_set_callback(
        quit.get(),
        [](gpointer loop) -> gboolean {
            g_main_loop_quit(static_cast<GMainLoop*>(loop));
            return G_SOURCE_REMOVE;
        },
        loop_.get(), nullptr);
    g_source_attach(quit.get(), context_.get());
    thread_.join();
}

void rtsp_server::listen(rtsp_settings const& settings)
{
    gst_rtsp_server_set_address(server_.get(), settings.address.c_str());
    std::string problem;
    int const last = settings.port == 0 ? 0 : std::min(settings.port + ports_to_try - 1, 65535);
    for (int port = settings.port; port <= last; ++port) {
        gst_rtsp_server_set_service(server_.get(), std::to_string(port).c_str());
        GError* error = nullptr;
        g_source_ptr const accepting{gst_rtsp_server_create_source(server_.get(), nullptr, &error)};
        error_ptr const owned{error};
        if (accepting) {
            g_source_attach(accepting.get(), context_.get());
            port_ = gst_rtsp_server_get_bound_port(server_.get());
            if (settings.port != 0 && port_ != settings.port)
                log::warning("port ", settings.port, " is taken, using ", port_);
            return;
        }
        problem = owned ? owned->message : "no reason given";
    }
    throw std::runtime_error{"cannot listen at " + settings.address + " port " + std::to_string(settings.port) + ": " +
                             problem};
}

void rtsp_server::run()
{
    g_main_context_push_thread_default(context_.get());
    g_source_ptr const timer{g_timeout_source_new_seconds(1)};
    g_source_set_callback(
        timer.get(),
        [](gpointer self) -> gboolean {
            static_cast<rtsp_server*>(self)->watch_connections();
            return G_SOURCE_CONTINUE;
        },
        this, nullptr);
    g_source_attach(timer.get(), context_.get());
    g_main_loop_run(loop_.get());
    g_source_destroy(timer.get());
    g_main_context_pop_thread_default(context_.get());
}

void rtsp_server::serve(std::string const& path, std::shared_ptr<mount> what)
{
    gst_rtsp_mount_points_add_factory(points_.get(), path.c_str(), make_factory(std::move(what)).release());
}

void rtsp_server::withdraw(std::string const& path)
{
    gst_rtsp_mount_points_remove_factory(points_.get(), path.c_str());
}

void rtsp_server::watch_connections()
{
    auto const pool = adopt<object_ptr<GstRTSPSessionPool>>(gst_rtsp_server_get_session_pool(server_.get()));
    gst_rtsp_session_pool_cleanup(pool.get());
    for (auto const& who : all_->all())
        who->end_if_dead(dead_after);
}

} // namespace quillo::publisher
