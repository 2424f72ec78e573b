// From R, G, B, A.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace rgba {
// Copies, and stores through all_opaque, when given, whether byte 3 of every pixel is 255.
void rgba(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          bool* all_opaque);
} // namespace rgba

namespace rgba_601 {
void rgba_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque);
} // namespace rgba_601

namespace rgba_709 {
void rgba_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque);
} // namespace rgba_709

} // namespace Processing::FXlib::format_conversion
