// Owning pointers to GLib and GStreamer objects. Nothing outside this file gives a reference back by hand: adopt()
// takes over a reference that one was given, retain() adds one.
#pragma once

#include <gst/gst.h>
#include <gst/video/video.h>

#include <memory>

namespace quillo {

template <auto Release>
struct releases
{
    template <class T>
    void operator()(T* p) const
    {
        Release(p);
    }
};

// Buffers, caps and samples have unref functions that are inline in the headers, hence different in every file.
inline void release_mini_object(void* p) { gst_mini_object_unref(static_cast<GstMiniObject*>(p)); }

template <class T>
using object_ptr = std::unique_ptr<T, releases<g_object_unref>>;
template <class T>
using mini_object_ptr = std::unique_ptr<T, releases<release_mini_object>>;

using element_ptr = object_ptr<GstElement>;
using pad_ptr = object_ptr<GstPad>;
using bus_ptr = object_ptr<GstBus>;
using pool_ptr = object_ptr<GstBufferPool>;
using buffer_ptr = mini_object_ptr<GstBuffer>;
using caps_ptr = mini_object_ptr<GstCaps>;
using sample_ptr = mini_object_ptr<GstSample>;
using message_ptr = mini_object_ptr<GstMessage>;
using string_ptr = std::unique_ptr<char, releases<g_free>>;
using error_ptr = std::unique_ptr<GError, releases<g_error_free>>;
using structure_ptr = std::unique_ptr<GstStructure, releases<gst_structure_free>>;
using context_ptr = std::unique_ptr<GMainContext, releases<g_main_context_unref>>;
using loop_ptr = std::unique_ptr<GMainLoop, releases<g_main_loop_unref>>;
using g_source_ptr = std::unique_ptr<GSource, releases<g_source_unref>>;
using video_converter_ptr = std::unique_ptr<GstVideoConverter, releases<gst_video_converter_free>>;

template <class Pointer>
Pointer adopt(typename Pointer::pointer p)
{
    return Pointer{p};
}

template <class T>
object_ptr<T> retain_object(T* p)
{
    return object_ptr<T>{static_cast<T*>(g_object_ref(p))};
}

template <class T>
mini_object_ptr<T> retain(T* p)
{
    return mini_object_ptr<T>{reinterpret_cast<T*>(gst_mini_object_ref(reinterpret_cast<GstMiniObject*>(p)))};
}

// Refers to an object that others keep. Copies are one reference; any thread may lock() at any time.
template <class T>
class weak_object
{
  public:
    weak_object() = default;
    explicit weak_object(T* of)
        : reference_(new GWeakRef, [](GWeakRef* reference) {
              g_weak_ref_clear(reference);
              delete reference;
          })
    {
        g_weak_ref_init(reference_.get(), of);
    }

    // Null when it is gone.
    object_ptr<T> lock() const
    {
        return object_ptr<T>{reference_ ? static_cast<T*>(g_weak_ref_get(reference_.get())) : nullptr};
    }

  private:
    std::shared_ptr<GWeakRef> reference_; // stays where it is: GLib knows its place
};

// The frame of a buffer, mapped while the object lives. False when it cannot be mapped.
class mapped_frame
{
  public:
    mapped_frame(GstVideoInfo const& info, GstBuffer* buffer, GstMapFlags flags)
        : mapped_(gst_video_frame_map(&frame_, const_cast<GstVideoInfo*>(&info), buffer, flags))
    {
    }
    ~mapped_frame()
    {
        if (mapped_)
            gst_video_frame_unmap(&frame_);
    }
    mapped_frame(mapped_frame const&) = delete;
    mapped_frame& operator=(mapped_frame const&) = delete;

    explicit operator bool() const { return mapped_; }
    GstVideoFrame* get() { return &frame_; }

  private:
    GstVideoFrame frame_{};
    bool mapped_;
};

} // namespace quillo
