// From a plane of 16-bit alpha.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace alpha_u16 {
// Keeps the upper byte.
void alpha(unsigned short const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace alpha_u16

} // namespace Processing::FXlib::format_conversion
