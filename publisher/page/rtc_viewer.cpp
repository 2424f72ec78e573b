#include "publisher/page/rtc_viewer.h"

#include "publisher/log.h"

#define GST_USE_UNSTABLE_API
#include <gst/webrtc/webrtc.h>

#include <cmath>
#include <stdexcept>

namespace quillo::publisher {

namespace {

constexpr std::chrono::milliseconds between_keys{250};

// The payload type behind the picture's is what webrtcbin takes for repeated packets: sound keeps away from it.
constexpr char const* description =
    "webrtcbin name=rtc bundle-policy=max-bundle "
    "appsrc name=video is-live=true format=time max-bytes=0 max-buffers=0 "
    "! rtph264pay pt=96 mtu=1200 config-interval=0 aggregate-mode=zero-latency "
    "! application/x-rtp,media=video,encoding-name=H264,payload=96,clock-rate=90000 ! rtc. "
    "appsrc name=audio is-live=true format=time max-bytes=0 max-buffers=50 leaky-type=downstream "
    "! rtpopuspay pt=111 mtu=1200 "
    "! application/x-rtp,media=audio,encoding-name=OPUS,payload=111,clock-rate=48000,encoding-params=(string)2 ! rtc. ";

// What browsers call the H.264 that every encoder here makes. The level does not matter to them, but the payloader
// takes no pictures above it: the highest.
constexpr char const* video_offer = "application/x-rtp,media=video,encoding-name=H264,payload=96,clock-rate=90000,"
                                    "packetization-mode=(string)1,profile-level-id=(string)42e034,"
                                    "level-asymmetry-allowed=(string)1";

using description_ptr = std::unique_ptr<GstWebRTCSessionDescription, releases<gst_webrtc_session_description_free>>;

GstWebRTCRTPTransceiver* transceiver(GstElement* rtc, int index)
{
    GstWebRTCRTPTransceiver* found = nullptr;
    g_signal_emit_by_name(rtc, "get-transceiver", index, &found);
    return found;
}

} // namespace

rtc_viewer::rtc_viewer(int id, loop_thread& loop, served_source what, std::shared_ptr<receivers> all, receiver_ptr who,
                       rtc_talk& talk)
    : id_(id), loop_(loop), what_(std::move(what)), all_(std::move(all)), who_(std::move(who)), talk_(talk)
{
    GError* problem = nullptr;
    pipeline_ = adopt<element_ptr>(gst_parse_launch_full(description, nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &problem));
    error_ptr const error{problem};
    if (!pipeline_)
        throw std::runtime_error{error ? error->message : "no WebRTC"};
    gst_object_ref_sink(pipeline_.get());
    auto const named = [&](char const* name) {
        return adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(pipeline_.get()), name));
    };
    rtc_ = named("rtc");
    video_in_ = named("video");
    audio_in_ = named("audio");
    run_on_common_clock(pipeline_.get());

    // Sound and picture by the time of capture, as receivers of the mounts get them.
    if (auto const rtpbin = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(rtc_.get()), "rtpbin"))) {
        g_object_set(rtpbin.get(), "rtcp-sync-send-time", FALSE, nullptr);
        gst_util_set_object_arg(G_OBJECT(rtpbin.get()), "ntp-time-source", "clock-time");
    }
    auto const offered = adopt<caps_ptr>(gst_caps_from_string(video_offer));
    for (int k = 0; k < 2; ++k)
        if (auto const one = object_ptr<GstWebRTCRTPTransceiver>{transceiver(rtc_.get(), k)}) {
            g_object_set(one.get(), "direction", GST_WEBRTC_RTP_TRANSCEIVER_DIRECTION_SENDONLY, nullptr);
            if (k == 0)
                g_object_set(one.get(), "codec-preferences", offered.get(), "do-nack", TRUE, nullptr);
        }
}

rtc_viewer::~rtc_viewer()
{
    if (attached_)
        what_.encoded->detach(*this);
    g_signal_handlers_disconnect_by_data(rtc_.get(), this);
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    all_->dismiss(who_);
}

void rtc_viewer::on_loop(void (rtc_viewer::*f)())
{
    loop_.post([weak = weak_from_this(), f] {
        if (auto const self = weak.lock())
            (self.get()->*f)();
    });
}

void rtc_viewer::connect_signals()
{
    tell_errors(pipeline_.get(), [&loop = loop_, weak = weak_from_this()](std::string const& what) {
        log::warning("page: WebRTC fails: ", what);
        loop.post([weak] {
            if (auto const self = weak.lock())
                self->talk_.over(self->id_, "the connection failed");
        });
    });
    auto const on_candidate = +[](GstElement*, guint mline, gchar* text, gpointer data) {
        auto* const self = static_cast<rtc_viewer*>(data);
        self->loop_.post([weak = self->weak_from_this(), mline, line = std::string{text}] {
            if (auto const still = weak.lock())
                still->talk_.candidate(still->id_, mline, line);
        });
    };
    g_signal_connect(rtc_.get(), "on-ice-candidate", G_CALLBACK(on_candidate), this);
    auto const on_state = +[](GstElement*, GParamSpec*, gpointer data) {
        static_cast<rtc_viewer*>(data)->on_loop(&rtc_viewer::state_changed);
    };
    g_signal_connect(rtc_.get(), "notify::connection-state", G_CALLBACK(on_state), this);

    // A browser that lost something asks for a key frame; the question comes back up to us.
    auto const pad = adopt<pad_ptr>(gst_element_get_static_pad(video_in_.get(), "src"));
    auto const on_event = +[](GstPad*, GstPadProbeInfo* info, gpointer data) -> GstPadProbeReturn {
        if (gst_video_event_is_force_key_unit(GST_PAD_PROBE_INFO_EVENT(info)))
            static_cast<rtc_viewer*>(data)->on_loop(&rtc_viewer::key_wanted);
        return GST_PAD_PROBE_OK;
    };
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_EVENT_UPSTREAM, on_event, this, nullptr);
}

void rtc_viewer::start()
{
    connect_signals();
    gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
    // The encoder starts while the connection is made.
    attached_ = true;
    what_.encoded->attach(*this);
    make_offer();
}

void rtc_viewer::make_offer()
{
    struct asked
    {
        loop_thread& loop;
        std::weak_ptr<rtc_viewer> weak;
    };
    // Nothing but the loop may hold a viewer: the last one to let go ends it, and with it webrtcbin's own thread.
    auto const on_done = [](GstPromise* promise, gpointer data) {
        auto const& [loop, weak] = *static_cast<asked*>(data);
        loop.post([weak = weak, reply = std::shared_ptr<GstPromise>{gst_promise_ref(promise), gst_promise_unref}] {
            if (auto const self = weak.lock())
                self->offer_made(reply.get());
        });
    };
    auto const forget = [](gpointer data) { delete static_cast<asked*>(data); };
    g_signal_emit_by_name(rtc_.get(), "create-offer", nullptr,
                          gst_promise_new_with_change_func(on_done, new asked{loop_, weak_from_this()}, forget));
}

void rtc_viewer::offer_made(GstPromise* promise)
{
    GstStructure const* const reply = gst_promise_get_reply(promise);
    GstWebRTCSessionDescription* made = nullptr;
    if (!reply || !gst_structure_get(reply, "offer", GST_TYPE_WEBRTC_SESSION_DESCRIPTION, &made, nullptr)) {
        talk_.over(id_, "no offer could be made");
        return;
    }
    description_ptr const offer{made};
    g_signal_emit_by_name(rtc_.get(), "set-local-description", offer.get(), nullptr);
    talk_.offer(id_, string_ptr{gst_sdp_message_as_text(offer->sdp)}.get());
}

void rtc_viewer::answer(std::string const& sdp)
{
    GstSDPMessage* message = nullptr;
    if (gst_sdp_message_new_from_text(sdp.c_str(), &message) != GST_SDP_OK) {
        talk_.over(id_, "the answer is no session description");
        return;
    }
    description_ptr const taken{gst_webrtc_session_description_new(GST_WEBRTC_SDP_TYPE_ANSWER, message)};
    g_signal_emit_by_name(rtc_.get(), "set-remote-description", taken.get(), nullptr);
}

void rtc_viewer::candidate(unsigned mline, std::string const& text)
{
    // Names made up for privacy cannot be found here; such a browser is known by the address that it calls from.
    if (text.find(".local ") == std::string::npos)
        g_signal_emit_by_name(rtc_.get(), "add-ice-candidate", mline, text.c_str());
}

void rtc_viewer::state_changed()
{
    GstWebRTCPeerConnectionState state{};
    g_object_get(rtc_.get(), "connection-state", &state, nullptr);
    if (state == GST_WEBRTC_PEER_CONNECTION_STATE_CONNECTED && !connected_) {
        log::info(path(), " page: ", who_->address(), " watches over WebRTC (", who_->agent(), ')');
        who_->playing = true;
        connected_ = true;
        key_wanted();
    } else if (state == GST_WEBRTC_PEER_CONNECTION_STATE_FAILED || state == GST_WEBRTC_PEER_CONNECTION_STATE_CLOSED) {
        talk_.over(id_, "the connection failed");
    }
}

void rtc_viewer::key_wanted()
{
    auto const now = steady::now();
    if (now - last_key_ < between_keys)
        return;
    last_key_ = now;
    what_.encoded->request_key_frame();
}

void rtc_viewer::access_unit(GstSample* unit, bool key)
{
    if (!connected_)
        return;
    if (!units_.push(GST_APP_SRC(video_in_.get()), unit, key, *who_))
        return;
    auto const since = monotonic_ns() - static_cast<std::int64_t>(GST_BUFFER_PTS(gst_sample_get_buffer(unit)));
    double const ms = static_cast<double>(since) / 1e6;
    double const before = delay_ms_;
    delay_ms_ = std::isnan(before) ? ms : before + (ms - before) / 16;
}

void rtc_viewer::opus_packet(GstSample* packet)
{
    if (connected_ && push_sample(audio_in_.get(), packet) == pushed::in_place_of_another)
        ++who_->blocks_dropped;
}

void rtc_viewer::ended()
{
    loop_.post([weak = weak_from_this()] {
        if (auto const self = weak.lock())
            self->talk_.over(self->id_, "the source has gone");
    });
}

} // namespace quillo::publisher
