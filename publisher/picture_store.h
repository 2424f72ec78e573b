// The publisher's own pictures of one source: in the sender's slots or copied out of them, black, and conversions.
#pragma once

#include "publisher/formats.h"
#include "publisher/frame_pool.h"
#include "publisher/gst_ptr.h"
#include "publisher/picture_copy.h"

namespace quillo::publisher {

class picture_store
{
  public:
    // So many in a row that need no copy, and the memory of copies is given back: a bad second may have taken several.
    static constexpr unsigned calm = 600;

    // The shape of the pictures from here on. Buffers of the shape before stay good.
    void set_format(picture_format const& format);

    // The picture where it lies, if it is lent and nothing is to be changed; else a copy, converted when it has another
    // shape. Not to be written to. Null when there is no memory.
    buffer_ptr take(sent_picture const& sent, picture_format const& shape);
    buffer_ptr black();

    // A picture of the set format, dark and grey: what is shown in place of a sender that has gone. Null when there is
    // no memory.
    buffer_ptr slate(GstBuffer* last);

    // The alpha of a picture, straight, of the set format's size, as alpha_info has it. Null where the sender's format
    // has none, or when there is no memory.
    buffer_ptr take_alpha(sent_picture const& sent, picture_format const& shape);

    // Gives the pools' memory back.
    void clear();

  private:
    buffer_ptr in_place(sent_picture const& sent) const;

    picture_format format_;
    bool has_format_ = false;
    unsigned in_place_ = 0; // in a row
    frame_pool fills_;
    frame_pool alphas_;
};

// The same memory with a time stamp of its own.
buffer_ptr restamped(GstBuffer* picture, std::int64_t time_ns);

} // namespace quillo::publisher
