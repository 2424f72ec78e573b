// From B, G, R, A.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace bgra {
// Copies, and stores through all_opaque, when given, whether byte 3 of every pixel is 255.
void bgra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          bool* all_opaque);
} // namespace bgra

namespace bgra_601 {
void bgra_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque);
} // namespace bgra_601

namespace bgra_709 {
void bgra_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque);
} // namespace bgra_709

} // namespace Processing::FXlib::format_conversion
