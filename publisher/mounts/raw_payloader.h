// Puts uncompressed pictures into packets (RFC 4175) that share the picture's memory. GStreamer's payloader copies
// every picture for every viewer, which costs more than sending it.
#pragma once

namespace quillo::publisher {

// The element's name for descriptions of pipelines; it is known to GStreamer from the first call on. What it does not
// understand, lines with padding among it, it leaves to "rtpvrawpay", which it is otherwise.
char const* raw_payloader();

} // namespace quillo::publisher
