// Takes a picture out of the memory that it shares with its sender.
#pragma once

#include "publisher/formats.h"

#include <cstddef>
#include <memory>

namespace quillo::publisher {

// A picture where the sender put it. A sender that breaks the rules may write to it at any time: nothing may depend on
// what its bytes are.
struct sent_picture
{
    protocol::video_format_body format; // checked
    unsigned char const* data;          // slot_bytes(format) of them
    std::shared_ptr<void const> loan{}; // whoever holds it may go on reading; null: only during the call
};

// Copies the fill, format.width by format.height pixels, rows dst_stride bytes apart. No byte beyond a row's pixels is
// written.
void copy_fill(sent_picture const& picture, picture_format const& format, unsigned char* dst, std::size_t dst_stride);

// Likewise the alpha of a picture that has some, one byte a pixel.
void copy_alpha(sent_picture const& picture, picture_format const& format, unsigned char* dst, std::size_t dst_stride);

// Puts alpha behind the bytes of "BGR" pixels.
void join_alpha(unsigned char const* bgr, unsigned char const* alpha, unsigned char* bgra, std::size_t pixels);

} // namespace quillo::publisher
