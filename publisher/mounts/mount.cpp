#include "publisher/mounts/mount.h"

#include "publisher/doors/rtsp_auth.h"
#include "publisher/mounts/connection_medias.h"
#include "publisher/pipeline.h"

#include <gst/app/gstappsrc.h>

// Two classes in GObject's way, as small as can be: all that they do is call a mount or a viewer.

namespace quillo::publisher {

namespace {

constexpr char const* viewer_key = "quillo-viewer";
// From the end of its streams, or from now on for who does not take them.
constexpr std::chrono::milliseconds on_its_way{100};
constexpr std::chrono::seconds goodbye_limit{1};

struct media
{
    GstRTSPMedia parent;
    bool over; // nothing of it is left but the object; under its state lock
};

struct mediaClass
{
    GstRTSPMediaClass parent;
};

struct factory
{
    GstRTSPMediaFactory parent;
    std::shared_ptr<mount>* served;
};

struct factoryClass
{
    GstRTSPMediaFactoryClass parent;
};

G_DEFINE_TYPE(media, quillo_media, GST_TYPE_RTSP_MEDIA)
G_DEFINE_TYPE(factory, quillo_factory, GST_TYPE_RTSP_MEDIA_FACTORY)

gboolean setup_sdp(GstRTSPMedia* self, GstSDPMessage* description, GstSDPInfo* info)
{
    if (!GST_RTSP_MEDIA_CLASS(quillo_media_parent_class)->setup_sdp(self, description, info))
        return FALSE;
    if (auto* const who = viewer_of(self))
        who->describe(*description);
    return TRUE;
}

gboolean setup_rtpbin(GstRTSPMedia* self, GstElement* rtpbin)
{
    if (auto* const who = viewer_of(self))
        who->who().set_reporter(rtpbin);
    // Sender reports carry the time of capture: sound and picture spend different times on the way to the wire.
    g_object_set(rtpbin, "rtcp-sync-send-time", FALSE, nullptr);
    // And the common clock itself. The wall clock would be read a moment apart from it, which a busy machine makes
    // long.
    gst_util_set_object_arg(G_OBJECT(rtpbin), "ntp-time-source", "clock-time");
    return TRUE;
}

void unprepared(GstRTSPMedia* self)
{
    reinterpret_cast<media*>(self)->over = true;
    if (auto* const who = viewer_of(self))
        who->leave();
}

message_ptr source_is_gone(GstElement* where)
{
    error_ptr const error{g_error_new_literal(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_FOUND, "the source is gone")};
    return adopt<message_ptr>(gst_message_new_error(where ? GST_OBJECT(where) : nullptr, error.get(), nullptr));
}

gboolean handle_message(GstRTSPMedia* self, GstMessage* message)
{
    // Its thread may have a last error of the pipeline in its hands. The parent class would take it for one of a media
    // that is still to be ended, and end it once more.
    if (reinterpret_cast<media*>(self)->over)
        return TRUE;
    auto* const parent = GST_RTSP_MEDIA_CLASS(quillo_media_parent_class);
    auto* const who = viewer_of(self);
    // The pipeline may have been too young to be told, hence it hears of it whatever it says.
    if (who && who->has_given_up())
        return parent->handle_message(self, source_is_gone(nullptr).get());
    // Everything that was pushed has reached the network, the goodbyes behind it.
    if (who && GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS)
        who->who().end(on_its_way);
    return parent->handle_message(self, message);
}

void quillo_media_class_init(mediaClass* of)
{
    of->parent.handle_message = handle_message;
    of->parent.unprepared = unprepared;
    of->parent.setup_sdp = setup_sdp;
    of->parent.setup_rtpbin = setup_rtpbin;
}

void quillo_media_init(media*) {}

GstElement* create_element(GstRTSPMediaFactory* self, GstRTSPUrl const*)
{
    auto who = (*reinterpret_cast<factory*>(self)->served)->open();
    if (!who)
        return nullptr;
    GstElement* const bin = who->take_bin();
    g_object_set_data_full(G_OBJECT(bin), viewer_key, who.release(),
                           [](gpointer viewer_data) { delete static_cast<viewer*>(viewer_data); });
    return bin;
}

GstElement* create_pipeline(GstRTSPMediaFactory* self, GstRTSPMedia* of)
{
    GstElement* const pipeline = GST_RTSP_MEDIA_FACTORY_CLASS(quillo_factory_parent_class)->create_pipeline(self, of);
    if (pipeline)
        run_on_common_clock(pipeline);
    return pipeline;
}

void configure(GstRTSPMediaFactory* self, GstRTSPMedia* of)
{
    GST_RTSP_MEDIA_FACTORY_CLASS(quillo_factory_parent_class)->configure(self, of);
    // Live: nothing is held back for its time.
    gst_rtsp_media_set_rate_control(of, FALSE);
    auto* const who = viewer_of(of);
    if (auto const* const request = gst_rtsp_context_get_current()) {
        who->who().identify(*request);
        if (request->client)
            connection_medias::of(request->client).add(of);
    }
    who->start();
}

void finalize(GObject* self)
{
    delete reinterpret_cast<factory*>(self)->served;
    G_OBJECT_CLASS(quillo_factory_parent_class)->finalize(self);
}

void quillo_factory_class_init(factoryClass* of)
{
    of->parent.create_element = create_element;
    of->parent.create_pipeline = create_pipeline;
    of->parent.configure = configure;
    G_OBJECT_CLASS(of)->finalize = finalize;
}

void quillo_factory_init(factory*) {}

} // namespace

void viewer::say_goodbye()
{
    gst_app_src_end_of_stream(GST_APP_SRC(video_in_.get()));
    gst_app_src_end_of_stream(GST_APP_SRC(audio_in_.get()));
    if (key_in_)
        gst_app_src_end_of_stream(GST_APP_SRC(key_in_.get()));
    who_->end(goodbye_limit);
}

// An error of the pipeline is what gst-rtsp-server stops waiting for.
void viewer::give_up()
{
    given_up_ = true;
    gst_element_post_message(video_in_.get(), source_is_gone(video_in_.get()).release());
    who_->end({});
}

object_ptr<GstRTSPMediaFactory> make_factory(std::shared_ptr<mount> served)
{
    auto* const made = static_cast<factory*>(g_object_new(quillo_factory_get_type(), nullptr));
    made->served = new std::shared_ptr<mount>{std::move(served)};
    GstRTSPMediaFactory* const result = &made->parent;
    gst_rtsp_media_factory_set_media_gtype(result, quillo_media_get_type());
    gst_rtsp_media_factory_set_shared(result, FALSE);
    gst_rtsp_media_factory_set_eos_shutdown(result, FALSE);
    open_to_viewers(result);
    gst_rtsp_media_factory_set_protocols(
        result, (*made->served)->tcp_only()
                    ? GST_RTSP_LOWER_TRANS_TCP
                    : static_cast<GstRTSPLowerTrans>(GST_RTSP_LOWER_TRANS_TCP | GST_RTSP_LOWER_TRANS_UDP));
    return object_ptr<GstRTSPMediaFactory>{result};
}

mount const* mount_of(GstRTSPMediaFactory* of)
{
    return G_TYPE_CHECK_INSTANCE_TYPE(of, quillo_factory_get_type()) ? reinterpret_cast<factory*>(of)->served->get()
                                                                     : nullptr;
}

viewer* viewer_of(GstRTSPMedia* of)
{
    auto const bin = adopt<element_ptr>(gst_rtsp_media_get_element(of));
    return bin ? static_cast<viewer*>(g_object_get_data(G_OBJECT(bin.get()), viewer_key)) : nullptr;
}

} // namespace quillo::publisher
