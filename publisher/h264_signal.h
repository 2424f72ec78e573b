// Says in an H.264 stream what its pictures mean: matrix, range, rate and pixel aspect. Some encoders leave that out,
// and receivers then guess by the size.
#pragma once

#include "publisher/formats.h"
#include "publisher/gst_ptr.h"

#include <span>
#include <vector>

namespace quillo::publisher {

// A sequence parameter set (a NAL unit without start code) with the picture's signal in it, where the encoder did not
// say it. One that cannot be read comes back as it was.
std::vector<unsigned char> with_signal(std::span<unsigned char const> sps, picture_format const& format);

// An access unit (byte stream) with that done to its parameter sets.
buffer_ptr with_signal(GstBuffer* access_unit, picture_format const& format);

} // namespace quillo::publisher
