// The publisher's own pictures of one source: copies out of the sender's slots, black, and conversions.
#pragma once

#include "publisher/formats.h"
#include "publisher/gst_ptr.h"
#include "publisher/picture_copy.h"

namespace quillo::publisher {

class picture_store
{
  public:
    picture_store() = default;
    picture_store(picture_store const&) = delete;
    picture_store& operator=(picture_store const&) = delete;
    ~picture_store() { clear(); }

    // The shape of the pictures from here on. Buffers of the shape before stay good.
    void set_format(picture_format const& format);

    // Copies, and converts when it has another shape. Null when there is no memory.
    buffer_ptr take(sent_picture const& sent, picture_format const& shape);
    buffer_ptr black();

    // Gives the pool's memory back.
    void clear();

  private:
    buffer_ptr blank();

    picture_format format_;
    GstVideoInfo info_{};
    bool has_format_ = false;
    pool_ptr pool_;
};

// The same memory with a time stamp of its own.
buffer_ptr restamped(GstBuffer* picture, std::int64_t time_ns);

} // namespace quillo::publisher
