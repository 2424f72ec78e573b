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

bool is_kind(GstStream* stream, stream_reader::kind kind)
{
    return gst_stream_get_stream_type(stream) ==
           (kind == stream_reader::kind::video ? GST_STREAM_TYPE_VIDEO : GST_STREAM_TYPE_AUDIO);
}

gst_ptr<GstElement> make_sink(stream_reader::kind kind)
{
    gst_ptr<GstElement> sink(GST_ELEMENT(gst_object_ref_sink(gst_element_factory_make("appsink", nullptr))));
    std::string const caps_text = kind == stream_reader::kind::video
                                      ? "video/x-raw, format=(string)" + std::string(readable_formats)
                                      : "audio/x-raw, format=(string)F32LE, layout=(string)interleaved";
    gst_ptr<GstCaps> const caps(gst_caps_from_string(caps_text.c_str()));
    g_object_set(sink.get(), "caps", caps.get(), "sync", FALSE, "max-buffers",
                 kind == stream_reader::kind::video ? 4u : 32u, "enable-last-sample", FALSE, nullptr);
    return sink;
}

// The orientation that a camera noted down, or null where the picture stands upright.
char const* orientation(GstPad* pad, std::string& storage)
{
    gst_ptr<GstStream> const stream(gst_pad_get_stream(pad));
    if (!stream)
        return nullptr;
    gst_ptr<GstTagList> const tags(gst_stream_get_tags(stream.get()));
    char* text = nullptr;
    if (!tags || !gst_tag_list_get_string(tags.get(), GST_TAG_IMAGE_ORIENTATION, &text))
        return nullptr;
    gst_ptr<char> const owned(text);
    storage = text;
    return storage == "rotate-0" ? nullptr : storage.c_str();
}

} // namespace

// What GStreamer calls on its own threads.
struct stream_reader::callbacks
{
    static int select_stream(GstElement*, GstStreamCollection* collection, GstStream* stream, stream_reader* self)
    {
        for (guint k = 0; k < gst_stream_collection_get_size(collection); ++k)
            if (GstStream* const candidate = gst_stream_collection_get_stream(collection, k);
                is_kind(candidate, self->wanted))
                return candidate == stream;
        return 0;
    }

    static void pad_added(GstElement*, GstPad* pad, stream_reader* self) { self->link(pad); }
};

stream_reader::stream_reader(std::string const& uri, std::string const& name_, kind wanted_)
    : name(name_), wanted(wanted_), sink(make_sink(wanted)),
      pipeline(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)))), bus(gst_element_get_bus(pipeline.get()))
{
    GstElement* const decoder = gst_element_factory_make("uridecodebin3", nullptr);
    if (decoder == nullptr)
        throw input_error(input_error::reason::unreadable,
                          "cannot read " + name + ": GStreamer's uridecodebin3 is not installed");
    g_object_set(decoder, "uri", uri.c_str(), nullptr);
    g_signal_connect(decoder, "select-stream", G_CALLBACK(callbacks::select_stream), this);
    g_signal_connect(decoder, "pad-added", G_CALLBACK(callbacks::pad_added), this);
    gst_bin_add_many(GST_BIN(pipeline.get()), decoder, GST_ELEMENT(gst_object_ref(sink.get())), nullptr);

    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    auto const give_up = std::chrono::steady_clock::now() + open_limit;
    while (!first && !absent) {
        check_bus();
        first.reset(gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), poll_time));
        if (!first && gst_app_sink_is_eos(GST_APP_SINK(sink.get())))
            absent = true;
        if (std::chrono::steady_clock::now() > give_up)
            throw input_error(input_error::reason::unreadable, "cannot read " + name + ": nothing arrives");
    }
    if (first)
        held.reset(gst_sample_ref(first.get()));
}

void stream_reader::stop_and_release::operator()(GstElement* running) const
{
    gst_element_set_state(running, GST_STATE_NULL);
    gst_object_unref(running);
}

// [streaming thread]
void stream_reader::link(GstPad* pad)
{
    if (!g_str_has_prefix(GST_PAD_NAME(pad), wanted == kind::video ? "video" : "audio"))
        return;
    gst_ptr<GstPad> const sink_pad(gst_element_get_static_pad(sink.get(), "sink"));
    if (gst_pad_is_linked(sink_pad.get()))
        return;

    std::string turn;
    GstElement* convert = gst_element_factory_make(wanted == kind::video ? "videoconvert" : "audioconvert", nullptr);
    if (wanted == kind::video)
        gst_util_set_object_arg(G_OBJECT(convert), "dither", "none");
    GstElement* last = convert;
    gst_bin_add(GST_BIN(pipeline.get()), convert);
    if (wanted == kind::video && orientation(pad, turn) != nullptr) {
        last = gst_element_factory_make("videoflip", nullptr);
        gst_util_set_object_arg(G_OBJECT(last), "video-direction", "auto");
        gst_bin_add(GST_BIN(pipeline.get()), last);
        gst_element_link(convert, last);
    }
    gst_element_link(last, sink.get());
    if (last != convert)
        gst_element_sync_state_with_parent(last);
    gst_element_sync_state_with_parent(convert);
    gst_ptr<GstPad> const target(gst_element_get_static_pad(convert, "sink"));
    gst_pad_link(pad, target.get());
}

void stream_reader::fail(GstMessage* error_message)
{
    GError* error = nullptr;
    gst_message_parse_error(error_message, &error, nullptr);
    gst_ptr<GError> const owned(error);
    std::string why = missing_decoder.empty() ? error->message : "no " + missing_decoder + " is installed";
    if (why.ends_with('.'))
        why.pop_back();
    throw input_error(input_error::reason::unreadable, "cannot read " + name + ": " + why);
}

void stream_reader::check_bus()
{
    while (gst_ptr<GstMessage> const message{gst_bus_pop(bus.get())}) {
        switch (GST_MESSAGE_TYPE(message.get())) {
        case GST_MESSAGE_ERROR:
            fail(message.get());
        case GST_MESSAGE_ELEMENT:
            if (gst_is_missing_plugin_message(message.get()))
                missing_decoder = gst_ptr<char>(gst_missing_plugin_message_get_description(message.get())).get();
            break;
        case GST_MESSAGE_STREAM_COLLECTION: {
            GstStreamCollection* collection = nullptr;
            gst_message_parse_stream_collection(message.get(), &collection);
            bool found = false;
            for (guint k = 0; k < gst_stream_collection_get_size(collection); ++k)
                found = found || is_kind(gst_stream_collection_get_stream(collection, k), wanted);
            gst_object_unref(collection);
            absent = !found;
            break;
        }
        default:
            break;
        }
    }
}

GstCaps* stream_reader::caps() const { return gst_sample_get_caps(first.get()); }

gst_ptr<GstSample> stream_reader::pull()
{
    auto const give_up = std::chrono::steady_clock::now() + stall_limit;
    while (true) {
        gst_ptr<GstSample> sample(gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), poll_time));
        if (sample)
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

gst_ptr<GstSample> stream_reader::next()
{
    peek();
    return std::move(held);
}

bool stream_reader::seek(nanoseconds position)
{
    held.reset();
    auto const flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
    return gst_element_seek_simple(pipeline.get(), GST_FORMAT_TIME, flags, position.count()) != FALSE;
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
