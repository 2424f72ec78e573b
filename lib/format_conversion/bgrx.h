// From B, G, R, X; the fourth byte carries no meaning.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace bgrx {
void bgrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgrx

namespace bgrx_601 {
void bgrx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgrx_601

namespace bgrx_709 {
void bgrx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgrx_709

} // namespace Processing::FXlib::format_conversion
