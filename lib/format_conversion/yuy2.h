// From packed 4:2:2, Y0 Cb Y1 Cr a pair of pixels.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace yuy2 {
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace yuy2

} // namespace Processing::FXlib::format_conversion
