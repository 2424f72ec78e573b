// A decoded frame into the host's pixels.
#pragma once

#include "tools/stand_in_host/media/color_matrix.h"
#include "tools/stand_in_host/picture.h"

#include <gst/video/video.h>

namespace quillo::stand_in {

// The encoding that the frame's caps state, with the usual guess by height where they state none.
color_encoding encoding_of(GstVideoInfo const& info);

// Converts a mapped frame of one of the readable formats. The target has the frame's size. 8-bit YCbCr samples that
// are BT.709 limited range already reach a vuya target unchanged.
void draw_frame(GstVideoFrame const& frame, bool interlaced, picture_view const& target);

} // namespace quillo::stand_in
