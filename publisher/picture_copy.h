// Takes a picture out of the memory that it shares with its sender.
#pragma once

#include "publisher/formats.h"

#include <cstddef>

namespace quillo::publisher {

// A picture where the sender put it. The sender may write to it at any time: every byte is read once.
struct sent_picture
{
    protocol::video_format_body format; // checked
    unsigned char const* data;          // slot_bytes(format) of them
};

// Copies the fill, format.width by format.height pixels, rows dst_stride bytes apart. No byte beyond a row's pixels is
// written.
void copy_fill(sent_picture const& picture, picture_format const& format, unsigned char* dst, std::size_t dst_stride);

} // namespace quillo::publisher
