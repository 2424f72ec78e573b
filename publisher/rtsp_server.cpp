#include "publisher/rtsp_server.h"

#include "publisher/link_watch.h"
#include "publisher/live_socket.h"
#include "publisher/log.h"
#include "publisher/mount_points.h"

#include <malloc.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

namespace quillo::publisher {

namespace {

constexpr int client_threads = 16; // one that waits for an encoder holds up those on its thread
constexpr int backlog = 128;       // more who come at once wait for a second
constexpr std::chrono::milliseconds goodbye_time{100};
constexpr std::chrono::milliseconds after_closing{500};

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

GstRTSPStatusCode refuse_when_full(GstRTSPClient* client, GstRTSPContext* request, gpointer)
{
    if (!request->uri)
        return GST_RTSP_STS_OK;
    auto const points = adopt<object_ptr<GstRTSPMountPoints>>(gst_rtsp_client_get_mount_points(client));
    auto const factory = find_mount(points.get(), request->uri);
    mount const* const asked = factory ? mount_of(factory.get()) : nullptr;
    return asked && asked->full() ? GST_RTSP_STS_SERVICE_UNAVAILABLE : GST_RTSP_STS_OK;
}

} // namespace

// gst-rtsp-server gives its own timers and threads the bare address of a connection: it must not go as soon as it is
// closed.
class rtsp_server::departed
{
  public:
    void add(GstRTSPClient* client)
    {
        std::lock_guard const lock{mutex_};
        if (!stopped_)
            clients_.emplace_back(steady::now(), retain_object(client));
    }

    void let_go()
    {
        std::vector<entry> old; // let go without the lock
        std::lock_guard const lock{mutex_};
        auto const due = std::partition(clients_.begin(), clients_.end(),
                                        [](entry const& one) { return steady::now() - one.first < after_closing; });
        std::move(due, clients_.end(), std::back_inserter(old));
        clients_.erase(due, clients_.end());
    }

    void stop()
    {
        std::vector<entry> old;
        std::lock_guard const lock{mutex_};
        stopped_ = true;
        old.swap(clients_);
    }

  private:
    using entry = std::pair<steady::time_point, object_ptr<GstRTSPClient>>;

    std::mutex mutex_;
    std::vector<entry> clients_;
    bool stopped_ = false;
};

void rtsp_server::welcome(GstRTSPClient* client)
{
    g_signal_connect(client, "pre-describe-request", G_CALLBACK(refuse_when_full), nullptr);
    g_signal_connect(client, "play-request", G_CALLBACK(on_play), nullptr);
    // Connections may outlive the server.
    g_signal_connect_data(
        client, "closed", G_CALLBACK(+[](GstRTSPClient* gone, gpointer list) {
            (*static_cast<std::shared_ptr<departed>*>(list))->add(gone);
        }),
        new std::shared_ptr<departed>{departed_},
        [](gpointer list, GClosure*) { delete static_cast<std::shared_ptr<departed>*>(list); }, GConnectFlags{});
}

rtsp_server::rtsp_server(rtsp_settings const& settings, std::shared_ptr<receivers> all)
    : all_(std::move(all)), context_(g_main_context_new()), loop_(g_main_loop_new(context_.get(), FALSE)),
      server_(gst_rtsp_server_new()), points_(make_mount_points()), departed_(std::make_shared<departed>()),
      doors_(std::make_shared<doors>(settings.doors)), dead_after_(settings.dead_after)
{
    gst_rtsp_server_set_mount_points(server_.get(), points_.get());
    gst_rtsp_server_set_thread_pool(server_.get(), make_thread_pool(threads_, client_threads).get());
    gst_rtsp_server_set_backlog(server_.get(), backlog);
    g_signal_connect(server_.get(), "client-connected",
                     G_CALLBACK(+[](GstRTSPServer*, GstRTSPClient* client, gpointer self) {
                         static_cast<rtsp_server*>(self)->welcome(client);
                     }),
                     this);
    change(settings.doors, settings.locks);
    listen(settings);
    thread_ = std::thread{[this] { run(); }};
}

rtsp_server::~rtsp_server()
{
    for (auto const& who : all_->all())
        who->end(goodbye_time);
    if (!all_->wait_until_empty(patience))
        log::warning("some receivers did not end in time");
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
    // Nobody comes in any more.
    doors_->shut_all();
    if (!threads_->wait_until_none(patience))
        log::warning("some connections did not end in time");
    departed_->stop();
}

void rtsp_server::change(door_settings const& settings, rtsp_locks const& locks)
{
    doors_->set(settings);
    gst_rtsp_server_set_auth(server_.get(), make_rtsp_auth(doors_, locks).get());
    gst_rtsp_server_set_content_length_limit(server_.get(), static_cast<guint>(settings.request_size));
}

void rtsp_server::listen(rtsp_settings const& settings)
{
    gst_rtsp_server_set_address(server_.get(), settings.address.c_str());
    std::string problem;
    int const last = settings.port == 0 ? 0 : std::min(settings.port + ports_to_try - 1, 65535);
    for (int port = settings.port; port <= last; ++port) {
        gst_rtsp_server_set_service(server_.get(), std::to_string(port).c_str());
        GError* error = nullptr;
        auto const listening =
            adopt<object_ptr<GSocket>>(gst_rtsp_server_create_socket(server_.get(), nullptr, &error));
        error_ptr const owned{error};
        if (listening) {
            accept(listening.get());
            if (settings.port != 0 && port_ != settings.port)
                log::warning("port ", settings.port, " is taken, using ", port_);
            return;
        }
        problem = owned ? owned->message : "no reason given";
    }
    throw std::runtime_error{"cannot listen at " + settings.address + " port " + std::to_string(settings.port) + ": " +
                             problem};
}

// Connections are made as the socket is that they come in at.
void rtsp_server::accept(GSocket* listening)
{
    make_live(listening);
    g_source_ptr const accepting{g_socket_create_source(listening, G_IO_IN, nullptr)};
    g_source_set_callback(accepting.get(), G_SOURCE_FUNC(gst_rtsp_server_io_func),
                          retain_object(server_.get()).release(), g_object_unref);
    g_source_attach(accepting.get(), context_.get());
    auto const here = adopt<object_ptr<GSocketAddress>>(g_socket_get_local_address(listening, nullptr));
    port_ = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(here.get()));
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
    link_watch const links{context_.get(), [this] { link_is_back(); }};
    g_main_loop_run(loop_.get());
    g_source_destroy(timer.get());
    g_main_context_pop_thread_default(context_.get());
}

void rtsp_server::serve(std::string const& path, std::shared_ptr<mount> what)
{
    gst_rtsp_mount_points_add_factory(points_.get(), inner_path(path).c_str(), make_factory(std::move(what)).release());
}

void rtsp_server::withdraw(std::string const& path)
{
    gst_rtsp_mount_points_remove_factory(points_.get(), inner_path(path).c_str());
}

void rtsp_server::link_is_back()
{
    for (auto const& who : all_->all())
        who->held_up();
}

void rtsp_server::watch_connections()
{
    auto const pool = adopt<object_ptr<GstRTSPSessionPool>>(gst_rtsp_server_get_session_pool(server_.get()));
    gst_rtsp_session_pool_cleanup(pool.get());
    departed_->let_go();
    doors_->look_around(steady::now());
    auto const everybody = all_->all();
    for (auto const& who : everybody)
        who->look_after(dead_after_);
    // What the last one needed goes back to the system.
    if (std::exchange(watched_, !everybody.empty()) && everybody.empty())
        ::malloc_trim(0);
}

} // namespace quillo::publisher
