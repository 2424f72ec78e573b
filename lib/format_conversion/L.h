// From a plane of grey.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace L {
// B = G = R = grey, alpha 255.
void bgra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace L

} // namespace Processing::FXlib::format_conversion
