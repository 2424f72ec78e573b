#include "publisher/receivers.h"

#include "publisher/log.h"
#include "publisher/machine.h"
#include "publisher/slug.h"

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <optional>

namespace quillo::publisher {

namespace {

constexpr std::size_t max_agent = 120;
constexpr std::size_t max_paths = 256;
// A connection whose other end has stopped reading still takes some bytes, as the kernels ask for room now and then.
// The sound alone is ten times as much.
constexpr std::uint64_t least_progress = 16384;

// Receivers set sound and picture right by sender reports, and by nothing else: where the network has just changed, or
// may have without a sign, they come often. Otherwise rarely, since each may move the times of the sound by a little.
// After a lag a receiver lets each stream go its own way so fast that half a second is too long.
constexpr std::chrono::milliseconds report_interval{5000};
constexpr std::chrono::milliseconds short_report_interval{500};
constexpr std::chrono::milliseconds shortest_report_interval{100};
constexpr std::chrono::milliseconds first_report_within{100};

struct tcp_state
{
    std::uint64_t acknowledged;
    bool data_waits;
    std::chrono::microseconds busy;
    std::chrono::microseconds waits_for_reader;
    std::chrono::microseconds round_trip;
};

std::optional<tcp_state> tcp_state_of(GSocket* socket)
{
    if (!socket || g_socket_is_closed(socket))
        return std::nullopt;
    tcp_info info{};
    socklen_t size = sizeof info;
    if (::getsockopt(g_socket_get_fd(socket), IPPROTO_TCP, TCP_INFO, &info, &size) != 0)
        return std::nullopt;
    return tcp_state{info.tcpi_bytes_acked, info.tcpi_notsent_bytes > 0 || info.tcpi_unacked > 0,
                     std::chrono::microseconds{info.tcpi_busy_time}, std::chrono::microseconds{info.tcpi_rwnd_limited},
                     std::chrono::microseconds{info.tcpi_rtt}};
}

} // namespace

void receiver::identify(GstRTSPContext const& request)
{
    std::lock_guard const lock{mutex_};
    if (request.conn)
        address_ = gst_rtsp_connection_get_ip(request.conn);
    GSource* const handling = g_main_current_source();
    if (request.client && handling) {
        client_ = weak_object{request.client};
        context_ = {g_main_context_ref(g_source_get_context(handling)), g_main_context_unref};
        if (GSocket* const socket = gst_rtsp_connection_get_write_socket(request.conn))
            socket_ = retain_object(socket);
    }
    gchar* agent = nullptr;
    if (request.request &&
        gst_rtsp_message_get_header(request.request, GST_RTSP_HDR_USER_AGENT, &agent, 0) == GST_RTSP_OK)
        agent_ = clean_name(agent, max_agent);
}

void receiver::identify(std::string address, std::string const& agent)
{
    std::lock_guard const lock{mutex_};
    address_ = std::move(address);
    agent_ = clean_name(agent, max_agent);
}

void receiver::set_transport(std::string transport)
{
    std::lock_guard const lock{mutex_};
    transport_ = std::move(transport);
}

void receiver::set_reporter(GstElement* rtpbin)
{
    std::lock_guard const lock{mutex_};
    reporter_ = retain_object(rtpbin);
}

std::string receiver::address() const
{
    std::lock_guard const lock{mutex_};
    return address_;
}

std::string receiver::agent() const
{
    std::lock_guard const lock{mutex_};
    return agent_;
}

std::string receiver::transport() const
{
    std::lock_guard const lock{mutex_};
    return transport_;
}

void receiver::on_its_thread(std::chrono::milliseconds from_now, std::function<void(GstRTSPClient*)> f) const
{
    std::lock_guard const lock{mutex_};
    if (!context_)
        return;
    struct call
    {
        weak_object<GstRTSPClient> client;
        std::function<void(GstRTSPClient*)> f;
    };
    g_source_ptr const later{g_timeout_source_new(static_cast<guint>(from_now.count()))};
    g_source_set_callback(
        later.get(),
        [](gpointer data) -> gboolean {
            auto const& what = *static_cast<call*>(data);
            if (auto const client = what.client.lock())
                what.f(client.get());
            return G_SOURCE_REMOVE;
        },
        new call{client_, std::move(f)}, [](gpointer data) { delete static_cast<call*>(data); });
    g_source_attach(later.get(), context_.get());
}

void receiver::end(std::chrono::milliseconds from_now)
{
    on_its_thread(from_now, [weak = weak_from_this()](GstRTSPClient* client) {
        auto const self = weak.lock();
        if (self && !self->ended_.exchange(true))
            log::info(self->path(), ' ', self->mount(), ": ", self->address(), " is ended");
        gst_rtsp_client_close(client);
    });
}

void receiver::look_after(steady::duration limit)
{
    // A call may wait for ever, when the thread is gone already: it must not hold what it is about.
    on_its_thread({}, [weak = weak_from_this(), limit](GstRTSPClient* client) {
        if (auto const self = weak.lock())
            self->check_progress(client, limit);
    });
}

void receiver::check_progress(GstRTSPClient* client, steady::duration limit)
{
    auto const state = tcp_state_of(socket_.get());
    auto const now = steady::now();
    bool const by_tcp = state && transport() == "TCP";
    bool const far = !is_loopback(address());
    using lately = network_change::lately;
    auto const network =
        network_.look(now, frames_dropped, by_tcp && far ? std::optional{state->round_trip} : std::nullopt);
    // Nothing tells in time what becomes of packets over UDP.
    bool const may_change = far && transport() == "UDP";
    set_report_interval(network == lately::caught_up               ? shortest_report_interval
                        : network == lately::changed || may_change ? short_report_interval
                                                                   : report_interval);
    if (by_tcp) {
        if (auto const why = slowness_.look(
                {now, frames_sent, frames_dropped, state->acknowledged, state->busy, state->waits_for_reader},
                mount() == "default"))
            log::warning(path(), ' ', mount(), ": ", address(), " (", agent(), ") ", *why);
    }
    if (!state || !state->data_waits || state->acknowledged >= acknowledged_ + least_progress) {
        acknowledged_ = state ? state->acknowledged : 0;
        waited_for_reader_ = state ? state->waits_for_reader : std::chrono::microseconds{};
        last_progress_ = now;
    } else if (now - last_progress_ > limit) {
        bool const unread = (state->waits_for_reader - waited_for_reader_) * 2 > now - last_progress_;
        log::warning(path(), ' ', mount(), ": ", address(), " (", agent(), ") took ",
                     state->acknowledged - acknowledged_, " bytes in ",
                     std::chrono::duration_cast<std::chrono::seconds>(now - last_progress_).count(),
                     " s and is given up: ",
                     unread ? "it does not read, its program hangs or was stopped; "
                            : "nothing gets through to it, its machine or the network to it is gone; ",
                     frames_dropped.load(), " pictures were dropped for it");
        gst_rtsp_client_close(client);
    }
}

void receiver::held_up()
{
    on_its_thread({}, [weak = weak_from_this()](GstRTSPClient*) {
        auto const self = weak.lock();
        if (!self)
            return;
        self->network_.stood_still(steady::now());
        if (self->report_every(short_report_interval))
            self->report_interval_ = short_report_interval;
    });
}

void receiver::set_report_interval(std::chrono::milliseconds interval)
{
    if (interval != report_interval_ && report_every(interval))
        report_interval_ = interval;
}

bool receiver::report_every(std::chrono::milliseconds interval) const
{
    element_ptr reporter;
    {
        std::lock_guard const lock{mutex_};
        if (!reporter_)
            return false;
        reporter = retain_object(reporter_.get());
    }
    auto const ns = [](std::chrono::nanoseconds time) { return static_cast<guint64>(time.count()); };
    for (guint stream = 0;; ++stream) {
        GObject* session = nullptr;
        g_signal_emit_by_name(reporter.get(), "get-internal-session", stream, &session);
        if (!session)
            return true;
        auto const held = adopt<object_ptr<GObject>>(session);
        g_object_set(session, "rtcp-min-interval", ns(interval), nullptr);
        // Else the interval begins to count with the next report.
        gboolean will = FALSE;
        g_signal_emit_by_name(session, "send-rtcp-full", ns(first_report_within), &will);
    }
}

std::size_t receivers::count(std::string const& source_path, std::string const& mount) const
{
    return static_cast<std::size_t>(std::count_if(receivers_.begin(), receivers_.end(), [&](auto const& who) {
        return who->path() == source_path && who->mount() == mount;
    }));
}

bool receivers::full(std::string const& source_path, std::string const& mount, std::size_t limit) const
{
    std::lock_guard const lock{mutex_};
    if (count(source_path, mount) < limit)
        return false;
    log::warning(source_path, ' ', mount, ": a viewer is refused, ", limit, " are there already");
    return true;
}

receiver_ptr receivers::admit(std::string const& source_path, std::string const& mount, std::size_t limit)
{
    std::lock_guard const lock{mutex_};
    if (count(source_path, mount) >= limit)
        return nullptr;
    receivers_.push_back(std::make_shared<receiver>(source_path, mount));
    return receivers_.back();
}

void receivers::dismiss(receiver_ptr const& who)
{
    std::lock_guard const lock{mutex_};
    if (std::erase(receivers_, who) > 0) {
        // Names of sources that are long forgotten do not add up.
        if (gone_.size() >= max_paths && !gone_.contains(who->path()))
            gone_.clear();
        auto& gone = gone_[who->path()];
        gone.frames_sent += who->frames_sent;
        gone.frames_dropped += who->frames_dropped;
        gone.blocks_dropped += who->blocks_dropped;
    }
    dismissed_.notify_all();
}

bool receivers::wait_until_empty(std::chrono::milliseconds limit) const
{
    std::unique_lock lock{mutex_};
    return dismissed_.wait_for(lock, limit, [&] { return receivers_.empty(); });
}

receivers::totals receivers::totals_of(std::string const& source_path) const
{
    std::lock_guard const lock{mutex_};
    auto const before = gone_.find(source_path);
    totals all = before == gone_.end() ? totals{} : before->second;
    for (auto const& who : receivers_)
        if (who->path() == source_path) {
            all.frames_sent += who->frames_sent;
            all.frames_dropped += who->frames_dropped;
            all.blocks_dropped += who->blocks_dropped;
        }
    return all;
}

std::vector<receiver_ptr> receivers::all() const
{
    std::lock_guard const lock{mutex_};
    return receivers_;
}

} // namespace quillo::publisher
