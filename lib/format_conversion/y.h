// From a plane of bytes.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace y {
// Copies; width is in bytes. The planes must not overlap.
void y(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);

// With both chroma bytes 128. compress takes full-range luma to 16..235.
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          bool compress);
} // namespace y

} // namespace Processing::FXlib::format_conversion
