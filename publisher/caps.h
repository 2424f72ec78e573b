// Shapes in GStreamer's words.
#pragma once

#include "publisher/formats.h"
#include "publisher/gst_ptr.h"

namespace quillo::publisher {

// Caps of the fill. Woven frames are called progressive: the receivers' payload formats know no better.
caps_ptr picture_caps(picture_format const& format);
GstVideoInfo picture_info(picture_format const& format);

} // namespace quillo::publisher
