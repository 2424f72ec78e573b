// From ten-bit 4:2:2, six pixels in sixteen bytes.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace v210 {
// Truncates to eight bits. A run's last group gives at most its first four pixels, and one or two pixels left over
// none: twelve become ten, eight become six. Reads whole groups.
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace v210

} // namespace Processing::FXlib::format_conversion
