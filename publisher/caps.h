// Shapes in GStreamer's words.
#pragma once

#include "publisher/formats.h"
#include "publisher/gst_ptr.h"

namespace quillo::publisher {

// Caps of the fill. Woven frames are called progressive: the receivers' payload formats know no better.
caps_ptr picture_caps(picture_format const& format);
// 24 bit, most significant byte first, interleaved; of more than two channels nothing is said about their places.
caps_ptr s24be_caps(sound_format const& format);

// Of a key in a picture of its own: alpha as luma from 0 to 255.
caps_ptr key_caps(picture_format const& format);

GstVideoInfo picture_info(picture_format const& format);
// A plane of alpha bytes beside a picture.
GstVideoInfo alpha_info(picture_format const& format);

} // namespace quillo::publisher
