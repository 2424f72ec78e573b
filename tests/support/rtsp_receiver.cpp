#include "tests/support/rtsp_receiver.h"

#include <gst/app/gstappsink.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <utility>

namespace quillo::testing {

namespace {

constexpr char const* payload_key = "payload";
constexpr guint8 rtcp_sender_report = 200; // RFC 3550, 6.4.1
constexpr std::size_t most_waiting = 32;   // pictures that nobody asked for yet
constexpr std::chrono::seconds opening_limit{5};

std::int64_t now_ns()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000ll + now.tv_nsec;
}

} // namespace

std::vector<unsigned char> rtsp_receiver::tight_bytes(GstVideoFrame& frame)
{
    std::vector<unsigned char> bytes;
    for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&frame); ++plane) {
        bool const packed = GST_VIDEO_FRAME_N_PLANES(&frame) == 1;
        auto const* row = static_cast<unsigned char const*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
        int const width = GST_VIDEO_FRAME_COMP_WIDTH(&frame, plane);
        int const pixel = GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, plane);
        int const row_bytes = packed && pixel == 2 ? GST_VIDEO_FRAME_WIDTH(&frame) * 2 : width * pixel;
        for (int y = 0; y < GST_VIDEO_FRAME_COMP_HEIGHT(&frame, plane); ++y) {
            bytes.insert(bytes.end(), row, row + row_bytes);
            row += GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane);
        }
    }
    return bytes;
}

rtsp_receiver::rtsp_receiver(std::string const& url, over transport, decode kind)
    : pipeline_(static_cast<GstElement*>(gst_object_ref_sink(gst_pipeline_new(nullptr)))),
      source_(gst_element_factory_make("rtspsrc", nullptr)), kind_(kind)
{
    g_object_set(source_, "location", url.c_str(), "latency", 0, nullptr);
    // Time stamps as they were sent, not smoothed over their arrival.
    gst_util_set_object_arg(G_OBJECT(source_), "buffer-mode", "none");
    gst_util_set_object_arg(G_OBJECT(source_), "protocols", transport == over::tcp ? "tcp" : "udp");
    gst_bin_add(GST_BIN(pipeline_.get()), source_);
    g_signal_connect(source_, "pad-added", G_CALLBACK(+[](GstElement*, GstPad* pad, gpointer self) {
                         static_cast<rtsp_receiver*>(self)->link(pad);
                     }),
                     this);
    g_signal_connect(source_, "on-sdp", G_CALLBACK(+[](GstElement*, GstSDPMessage* sdp, gpointer data) {
                         auto* const self = static_cast<rtsp_receiver*>(data);
                         string_ptr const text{gst_sdp_message_as_text(sdp)};
                         std::lock_guard const lock{self->mutex_};
                         self->sdp_ = text.get();
                         self->changed_.notify_all();
                     }),
                     this);
    g_signal_connect(source_, "new-manager", G_CALLBACK(+[](GstElement*, GstElement* rtpbin, gpointer self) {
                         g_signal_connect(rtpbin, "on-new-ssrc", G_CALLBACK(stream_began), self);
                     }),
                     this);
    gst_bus_set_sync_handler(
        adopt<bus_ptr>(gst_element_get_bus(pipeline_.get())).get(),
        [](GstBus*, GstMessage* message, gpointer self) {
            if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_PROGRESS)
                static_cast<rtsp_receiver*>(self)->note(message);
            return GST_BUS_PASS;
        },
        this, nullptr);
}

void rtsp_receiver::note(GstMessage* progress)
{
    GstProgressType how;
    gchar* what = nullptr;
    gst_message_parse_progress(progress, &how, &what, nullptr);
    string_ptr const owned{what};
    if (owned.get() != std::string_view{"open"})
        return;
    std::lock_guard const lock{mutex_};
    opening_ = how == GST_PROGRESS_TYPE_START || how == GST_PROGRESS_TYPE_CONTINUE;
    changed_.notify_all();
}

void rtsp_receiver::start() { gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING); }

// The ends first, which may hold threads of the source, then the source: otherwise its threads would still be in the
// depayloaders, where rtpvrawdepay goes on with a description of pictures that is gone as soon as it is stopped.
//
// Not while it opens: it would use its list of streams while its own thread, which was refused, gives them up. Of that
// it has told before, so that who waited for the error may come too early.
rtsp_receiver::~rtsp_receiver()
{
    {
        std::unique_lock lock{mutex_};
        changed_.wait_for(lock, opening_limit, [this] { return !opening_; });
    }
    std::unique_ptr<GstIterator, decltype(&gst_iterator_free)> ends{nullptr, gst_iterator_free};
    {
        std::lock_guard const lock{linking_};
        closing_ = true;
        ends.reset(gst_bin_iterate_all_by_element_factory_name(GST_BIN(pipeline_.get()), "appsink"));
    }
    gst_iterator_foreach(
        ends.get(),
        [](GValue const* end, gpointer) {
            auto* const sink = GST_ELEMENT(g_value_get_object(end));
            gst_element_set_locked_state(sink, TRUE);
            gst_element_set_state(sink, GST_STATE_NULL);
        },
        nullptr);
    gst_element_set_state(source_, GST_STATE_NULL);
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
}

void rtsp_receiver::stream_began(GstElement* rtpbin, guint stream, guint, gpointer self)
{
    static_cast<rtsp_receiver*>(self)->count_reports(rtpbin, stream);
}

void rtsp_receiver::count_reports(GstElement* rtpbin, unsigned stream)
{
    {
        std::lock_guard const lock{mutex_};
        if (!reports_.try_emplace(stream, 0).second) // another source of the same stream
            return;
    }
    struct counter
    {
        rtsp_receiver* self;
        unsigned stream;
    };
    GObject* session = nullptr;
    g_signal_emit_by_name(rtpbin, "get-internal-session", stream, &session);
    auto const held = adopt<object_ptr<GObject>>(session);
    g_signal_connect_data(
        session, "on-receiving-rtcp", G_CALLBACK(+[](GObject*, GstBuffer* rtcp, gpointer data) {
            auto const& to = *static_cast<counter*>(data);
            guint8 head[2] = {};
            gst_buffer_extract(rtcp, 0, head, sizeof head);
            if (head[1] != rtcp_sender_report)
                return;
            std::lock_guard const lock{to.self->mutex_};
            ++to.self->reports_[to.stream];
        }),
        new counter{this, stream}, [](gpointer data, GClosure*) { delete static_cast<counter*>(data); },
        GConnectFlags{});
}

void rtsp_receiver::link(GstPad* pad)
{
    auto const caps = adopt<caps_ptr>(gst_pad_get_current_caps(pad));
    std::lock_guard const lock{linking_};
    if (!caps || closing_) // at its end already
        return;
    GstStructure const* const first = gst_caps_get_structure(caps.get(), 0);
    bool const video = std::string_view{gst_structure_get_string(first, "media")} == "video";
    char const* const description = video ? (kind_ == decode::raw ? "rtpvrawdepay ! appsink name=out"
                                                                  : "rtph264depay ! avdec_h264 ! appsink name=out")
                                          : (kind_ == decode::raw ? "rtpL24depay ! appsink name=out"
                                                                  : "rtpopusdepay ! opusdec ! audioconvert ! "
                                                                    "audio/x-raw,format=S16LE ! appsink name=out");
    GstElement* const bin = gst_parse_bin_from_description(description, TRUE, nullptr);
    auto const out = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(bin), "out"));
    // Without preroll: a sink that is added while another one's preroll sets the pipeline back may be left waiting.
    g_object_set(out.get(), "sync", FALSE, "async", FALSE, nullptr);
    GstAppSinkCallbacks callbacks{};
    using taker = GstFlowReturn (*)(GstAppSink*, gpointer);
    callbacks.new_sample = video ? static_cast<taker>([](GstAppSink* sink, gpointer self) {
        auto const sample = adopt<sample_ptr>(gst_app_sink_pull_sample(sink));
        if (sample)
            static_cast<rtsp_receiver*>(self)->take_picture(
                sample.get(), GPOINTER_TO_INT(g_object_get_data(G_OBJECT(sink), payload_key)));
        return GST_FLOW_OK;
    })
                                 : static_cast<taker>([](GstAppSink* sink, gpointer self) {
                                       auto const sample = adopt<sample_ptr>(gst_app_sink_pull_sample(sink));
                                       if (sample)
                                           static_cast<rtsp_receiver*>(self)->take_sound(sample.get());
                                       return GST_FLOW_OK;
                                   });
    gint payload = 0;
    gst_structure_get_int(first, "payload", &payload);
    g_object_set_data(G_OBJECT(out.get()), payload_key, GINT_TO_POINTER(payload));
    gst_app_sink_set_callbacks(GST_APP_SINK(out.get()), &callbacks, this, nullptr);
    gst_bin_add(GST_BIN(pipeline_.get()), bin);
    auto const sink = adopt<pad_ptr>(gst_element_get_static_pad(bin, "sink"));
    gst_pad_link(pad, sink.get());
    gst_element_sync_state_with_parent(bin);
}

void rtsp_receiver::take_picture(GstSample* sample, int payload)
{
    auto const arrived = now_ns();
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample)))
        return;
    GstBuffer* const buffer = gst_sample_get_buffer(sample);
    mapped_frame frame{info, buffer, GST_MAP_READ};
    if (!frame)
        return;
    if (on_frame) {
        on_frame(*frame.get(), arrived);
        std::lock_guard const lock{mutex_};
        ++pictures_;
        return;
    }
    picture got{GST_VIDEO_INFO_WIDTH(&info),
                GST_VIDEO_INFO_HEIGHT(&info),
                GST_VIDEO_INFO_NAME(&info),
                {},
                static_cast<std::int64_t>(GST_BUFFER_PTS(buffer)),
                arrived,
                payload};
    got.bytes = tight_bytes(*frame.get());
    std::lock_guard const lock{mutex_};
    ++pictures_;
    if (waiting_.size() == most_waiting)
        waiting_.erase(waiting_.begin());
    waiting_.push_back(std::move(got));
    changed_.notify_all();
}

void rtsp_receiver::take_sound(GstSample* sample)
{
    GstMapInfo map;
    GstBuffer* const buffer = gst_sample_get_buffer(sample);
    string_ptr const caps{gst_caps_to_string(gst_sample_get_caps(sample))};
    if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
        return;
    {
        std::lock_guard const lock{mutex_};
        sound_.insert(sound_.end(), map.data, map.data + map.size);
        sound_caps_ = caps.get();
        changed_.notify_all();
    }
    gst_buffer_unmap(buffer, &map);
}

std::optional<rtsp_receiver::picture> rtsp_receiver::wait_for_picture(std::function<bool(picture const&)> const& fits,
                                                                      std::chrono::milliseconds limit)
{
    std::unique_lock lock{mutex_};
    std::optional<picture> found;
    changed_.wait_for(lock, limit, [&] {
        while (!waiting_.empty() && !found) {
            if (!fits || fits(waiting_.front()))
                found = std::move(waiting_.front());
            waiting_.erase(waiting_.begin());
        }
        return found.has_value();
    });
    return found;
}

std::vector<unsigned char> rtsp_receiver::wait_for_sound(std::size_t bytes, std::chrono::milliseconds limit)
{
    std::unique_lock lock{mutex_};
    changed_.wait_for(lock, limit, [&] { return sound_.size() >= bytes; });
    return std::exchange(sound_, {});
}

bool rtsp_receiver::wait_for_end(std::chrono::milliseconds limit)
{
    auto const bus = adopt<bus_ptr>(gst_element_get_bus(pipeline_.get()));
    return adopt<message_ptr>(
               gst_bus_timed_pop_filtered(bus.get(), static_cast<GstClockTime>(limit.count()) * GST_MSECOND,
                                          static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR))) != nullptr;
}

std::size_t rtsp_receiver::pictures() const
{
    std::lock_guard const lock{mutex_};
    return pictures_;
}

std::size_t rtsp_receiver::sender_reports() const
{
    std::lock_guard const lock{mutex_};
    auto const of = [&](unsigned stream) {
        auto const found = reports_.find(stream);
        return found == reports_.end() ? 0 : found->second;
    };
    return std::min(of(0), of(1));
}

std::string rtsp_receiver::sdp() const
{
    std::lock_guard const lock{mutex_};
    return sdp_;
}

std::string rtsp_receiver::sound_caps() const
{
    std::lock_guard const lock{mutex_};
    return sound_caps_;
}

} // namespace quillo::testing
