// From B, G, R.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace bgr {
// Copies width * 4 bytes of each line: size strides and buffers for it.
void bgr(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);

// BT.709. An odd width reads three bytes beyond the run and writes a whole last pair.
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgr

namespace bgr_601 {
void bgr_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgr_601

namespace bgr_709 {
void bgr_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgr_709

} // namespace Processing::FXlib::format_conversion
