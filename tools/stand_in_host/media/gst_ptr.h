// Owning pointers for what GStreamer and GLib hand out.
#pragma once

#include <gst/gst.h>

#include <memory>

namespace quillo::stand_in {

struct gst_release
{
    void operator()(GstElement* element) const { gst_object_unref(element); }
    void operator()(GstBus* bus) const { gst_object_unref(bus); }
    void operator()(GstPad* pad) const { gst_object_unref(pad); }
    void operator()(GstStream* stream) const { gst_object_unref(stream); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(GstTagList* tags) const { gst_tag_list_unref(tags); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(char* text) const { g_free(text); }
};

// Adopts a reference or an allocation that its holder was given.
template <typename T>
using gst_ptr = std::unique_ptr<T, gst_release>;

} // namespace quillo::stand_in
