// From Y, Cb, Cr, X; the fourth byte carries no meaning.
// Strides are in bytes and may be negative; width and height are in pixels. To UYVY an odd run reads one pixel beyond
// its end and writes a whole last pair.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace ycbcrx {
void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace ycbcrx

} // namespace Processing::FXlib::format_conversion
