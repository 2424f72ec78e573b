// Frames of one shape, made when they are needed and used again. Frames that are still out stay good whatever happens
// to their pool.
#pragma once

#include "publisher/gst_ptr.h"

namespace quillo::publisher {

class frame_pool
{
  public:
    frame_pool() = default;
    frame_pool(frame_pool const&) = delete;
    frame_pool& operator=(frame_pool const&) = delete;
    ~frame_pool() { clear(); }

    void set_info(GstVideoInfo const& info);
    GstVideoInfo const& info() const { return info_; }

    // With whatever was in it. Null when there is no memory.
    buffer_ptr blank();

    // Gives the memory back: at once, or once the last frame that is out has come back.
    void clear();

  private:
    GstVideoInfo info_{};
    pool_ptr pool_;
};

// The first plane of a mapped frame.
struct plane
{
    unsigned char* data;
    int stride;
};
plane plane_of(mapped_frame& frame);

// A frame from the pool, filled by convert(plane from, plane to, width, height) with the size of the pool's frames.
// Null when there is no memory.
template <class Convert>
buffer_ptr converted(GstBuffer* picture, GstVideoInfo const& info, frame_pool& pool, Convert convert)
{
    auto made = pool.blank();
    if (!made)
        return nullptr;
    mapped_frame from{info, picture, GST_MAP_READ};
    mapped_frame to{pool.info(), made.get(), GST_MAP_WRITE};
    if (!from || !to)
        return nullptr;
    convert(plane_of(from), plane_of(to), GST_VIDEO_INFO_WIDTH(&pool.info()), GST_VIDEO_INFO_HEIGHT(&pool.info()));
    return made;
}

} // namespace quillo::publisher
