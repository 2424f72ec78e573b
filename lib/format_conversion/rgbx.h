// From R, G, B, X; the fourth byte carries no meaning.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace rgbx {
void rgbx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace rgbx

namespace rgbx_601 {
void rgbx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace rgbx_601

namespace rgbx_709 {
void rgbx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace rgbx_709

} // namespace Processing::FXlib::format_conversion
