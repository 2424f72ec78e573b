// GStreamer's video converter, for any pair of its formats.
#pragma once

#include "bench/row.h"

namespace bench {

// Formats by their caps names ("BGRA", "UYVY"); planes in the frame's order. matrix: "bt709" or "bt601".
candidate gstreamer(char const* from, char const* to, job work, char const* matrix = "bt709");

} // namespace bench
