#include "tools/stand_in_host/media/stream_reader.h"
#include "tools/stand_in_host/media/component_reader.h"
#include "tools/stand_in_host/media/input_error.h"

#include <gst/app/gstappsink.h>
#include <gst/pbutils/missing-plugins.h>

namespace quillo::stand_in {

namespace {

using namespace std::chrono_literals;

constexpr auto open_limit = 30s;  // for a stream to show its first buffer
constexpr auto stall_limit = 30s; // for a stream to show the next one
constexpr GstClockTime poll_time = 50 * GST_MSECOND;

void set_up_sink(GstElement* sink, stream_reader::kind kind)
{
    std::string const caps_text = kind == stream_reader::kind::video
                                      ? "video/x-raw, format=(string)" + std::string(readable_formats)
                                      : "audio/x-raw, format=(string)F32LE, layout=(string)interleaved";
    caps_ptr const caps(gst_caps_from_string(caps_text.c_str()));
    g_object_set(sink, "caps", caps.get(), "sync", FALSE, "max-buffers", kind == stream_reader::kind::video ? 4u : 32u,
                 "enable-last-sample", FALSE, nullptr);
}

} // namespace

// What GStreamer calls on its own threads.
struct stream_reader::callbacks
{
    // Their times after a search are not those of before.
    static void element_added(GstBin*, GstBin*, GstElement* added, stream_reader* self)
    {
        GstElementFactory* const factory = gst_element_get_factory(added);
        if (factory == nullptr)
            return;
        std::string_view const made_by = GST_OBJECT_NAME(factory);
        if (made_by == "tsdemux" || made_by == "mpegpsdemux")
            self->imprecise = true;
    }

    // A container's elementary streams come by here with their types.
    static gboolean stream_found(GstElement*, GstPad*, GstCaps* caps, stream_reader* self)
    {
        if (g_str_has_prefix(gst_structure_get_name(gst_caps_get_structure(caps, 0)), "audio/"))
            self->saw_audio = true;
        return TRUE;
    }

    static GstPadProbeReturn event_passes(GstPad*, GstPadProbeInfo* info, gpointer self)
    {
        GstEvent* const event = gst_pad_probe_info_get_event(info);
        if (GST_EVENT_TYPE(event) != GST_EVENT_TAG)
            return GST_PAD_PROBE_OK;
        GstTagList* tags = nullptr;
        gst_event_parse_tag(event, &tags);
        char* text = nullptr;
        if (gst_tag_list_get_string(tags, GST_TAG_IMAGE_ORIENTATION, &text)) {
            string_ptr const owned(text);
            static_cast<stream_reader*>(self)->upright = parse_orientation(text);
        }
        return GST_PAD_PROBE_OK;
    }

    // Decoders say where the planes of a picture lie to those who ask for it. What the type alone lets one compute is
    // wrong for woven 4:2:0 pictures with an odd number of chroma rows.
    static GstPadProbeReturn asked_for_memory(GstPad*, GstPadProbeInfo* info, gpointer)
    {
        GstQuery* const query = gst_pad_probe_info_get_query(info);
        if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION)
            return GST_PAD_PROBE_OK;
        gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
        return GST_PAD_PROBE_HANDLED;
    }

    static void pad_added(GstElement*, GstPad* pad, stream_reader* self) { self->link(pad); }

    static void no_more_pads(GstElement*, stream_reader* self) { self->complete = true; }
};

stream_reader::stream_reader(std::string const& uri_, std::string const& name_, kind wanted_)
    : uri(uri_), name(name_), wanted(wanted_)
{
    open();
    if (first)
        held.reset(gst_sample_copy(first.get()));
}

GstElement* stream_reader::make(char const* element) const
{
    GstElement* const made = gst_element_factory_make(element, nullptr);
    if (made == nullptr)
        throw input_error(input_error::reason::unreadable,
                          "cannot read " + name + ": GStreamer's " + element + " is not installed");
    return made;
}

void stream_reader::open()
{
    pipeline.reset();
    sink.reset(GST_ELEMENT(gst_object_ref_sink(make("appsink"))));
    set_up_sink(sink.get(), wanted);
    convert.reset(GST_ELEMENT(gst_object_ref_sink(make(wanted == kind::video ? "videoconvert" : "audioconvert"))));
    if (wanted == kind::video)
        gst_util_set_object_arg(G_OBJECT(convert.get()), "dither", "none");
    complete = false;
    linked = false;
    caps_ptr const raw(gst_caps_new_empty_simple(wanted == kind::video ? "video/x-raw" : "audio/x-raw"));
    gst_caps_set_features_simple(raw.get(), gst_caps_features_new_any());
    // Streams of other kinds are not decoded.
    GstElement* const decoder = make("uridecodebin");
    g_object_set(decoder, "uri", uri.c_str(), "caps", raw.get(), "expose-all-streams", FALSE, nullptr);
    g_signal_connect(decoder, "autoplug-continue", G_CALLBACK(callbacks::stream_found), this);
    g_signal_connect(decoder, "no-more-pads", G_CALLBACK(callbacks::no_more_pads), this);
    g_signal_connect(decoder, "pad-added", G_CALLBACK(callbacks::pad_added), this);
    g_signal_connect(decoder, "deep-element-added", G_CALLBACK(callbacks::element_added), this);

    pipeline.reset(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))));
    bus.reset(gst_element_get_bus(pipeline.get()));
    // It takes references of its own to what we hold.
    gst_bin_add_many(GST_BIN(pipeline.get()), decoder, convert.get(), sink.get(), nullptr);
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    auto const give_up = std::chrono::steady_clock::now() + open_limit;
    while (!first && !absent) {
        first = try_pull();
        absent = !first && complete && (!linked || gst_app_sink_is_eos(GST_APP_SINK(sink.get())));
        if (!first && !absent)
            check_bus();
        if (std::chrono::steady_clock::now() > give_up)
            throw input_error(input_error::reason::unreadable, "cannot read " + name + ": nothing arrives");
    }
}

void stream_reader::stop_and_release::operator()(GstElement* running) const
{
    gst_element_set_state(running, GST_STATE_NULL);
    gst_object_unref(running);
}

// [streaming thread]
void stream_reader::link(GstPad* pad)
{
    caps_ptr const pad_caps(gst_pad_query_caps(pad, nullptr));
    char const* const media_type = gst_structure_get_name(gst_caps_get_structure(pad_caps.get(), 0));
    if (linked || !g_str_has_prefix(media_type, wanted == kind::video ? "video/" : "audio/"))
        return;
    linked = true;

    if (wanted == kind::video) {
        pad_ptr const asked(gst_element_get_static_pad(sink.get(), "sink"));
        gst_pad_add_probe(asked.get(), GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, callbacks::asked_for_memory, nullptr,
                          nullptr);
    }
    gst_element_link(convert.get(), sink.get());
    pad_ptr const target(gst_element_get_static_pad(convert.get(), "sink"));
    gst_pad_add_probe(target.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, callbacks::event_passes, this, nullptr);
    gst_pad_link(pad, target.get());
}

void stream_reader::fail(GstMessage* error_message)
{
    GError* error = nullptr;
    gst_message_parse_error(error_message, &error, nullptr);
    error_ptr const owned(error);
    if (!linked && saw_audio && wanted == kind::video && missing_decoder.empty()) {
        absent = true; // the error only says that nobody takes the sound
        return;
    }
    std::string why = missing_decoder.empty() ? error->message : "no " + missing_decoder + " is installed";
    if (why.ends_with('.'))
        why.pop_back();
    throw input_error(input_error::reason::unreadable, "cannot read " + name + ": " + why);
}

void stream_reader::check_bus()
{
    while (message_ptr const message{gst_bus_pop(bus.get())}) {
        switch (GST_MESSAGE_TYPE(message.get())) {
        case GST_MESSAGE_ERROR:
            fail(message.get());
            break;
        case GST_MESSAGE_ELEMENT:
            if (gst_is_missing_plugin_message(message.get()))
                missing_decoder = string_ptr(gst_missing_plugin_message_get_description(message.get())).get();
            break;
        default:
            break;
        }
    }
}

GstCaps* stream_reader::caps() const { return gst_sample_get_caps(first.get()); }

sample_ptr stream_reader::try_pull()
{
    sample_ptr const shared(gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), poll_time));
    // The sink writes into the sample again after a search, unless somebody holds it; so hold a copy, which shares the
    // picture.
    return sample_ptr(shared ? gst_sample_copy(shared.get()) : nullptr);
}

sample_ptr stream_reader::pull()
{
    auto const give_up = std::chrono::steady_clock::now() + stall_limit;
    while (true) {
        if (sample_ptr sample = try_pull())
            return sample;
        if (gst_app_sink_is_eos(GST_APP_SINK(sink.get())))
            return nullptr;
        check_bus();
        if (std::chrono::steady_clock::now() > give_up)
            throw input_error(input_error::reason::unreadable, "cannot read on in " + name + ": nothing arrives");
    }
}

GstSample* stream_reader::peek()
{
    if (!held)
        held = pull();
    return held.get();
}

sample_ptr stream_reader::next()
{
    peek();
    return std::move(held);
}

bool stream_reader::seek(nanoseconds position)
{
    held.reset();
    if (imprecise) {
        open();
        return true;
    }
    auto const flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
    return gst_element_seek_simple(pipeline.get(), GST_FORMAT_TIME, flags, position.count()) != FALSE;
}

bool stream_reader::is_searchable() const
{
    if (imprecise)
        return uri.starts_with("file:"); // it is opened again
    GstQuery* const query = gst_query_new_seeking(GST_FORMAT_TIME);
    gboolean searchable = FALSE;
    if (gst_element_query(pipeline.get(), query))
        gst_query_parse_seeking(query, nullptr, &searchable, nullptr, nullptr);
    gst_query_unref(query);
    return searchable != FALSE;
}

std::optional<stream_reader::nanoseconds> stream_reader::duration() const
{
    gint64 length = 0;
    if (!gst_element_query_duration(pipeline.get(), GST_FORMAT_TIME, &length) || length <= 0)
        return std::nullopt;
    return nanoseconds(length);
}

std::chrono::nanoseconds stream_time(GstSample* sample)
{
    GstBuffer* const buffer = gst_sample_get_buffer(sample);
    guint64 time = 0;
    int const sign =
        gst_segment_to_stream_time_full(gst_sample_get_segment(sample), GST_FORMAT_TIME, GST_BUFFER_PTS(buffer), &time);
    if (sign == 0)
        return {};
    return std::chrono::nanoseconds(sign * static_cast<std::int64_t>(time));
}

} // namespace quillo::stand_in
