// From 16-bit 4:2:2 in a plane of luma and one of interleaved chroma.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace p216 {
// Keeps the upper byte of every sample.
void uyvy(unsigned short const* y, int y_stride, unsigned short const* uv, int uv_stride, unsigned char* dst,
          int dst_stride, int width, int height);
} // namespace p216

} // namespace Processing::FXlib::format_conversion
