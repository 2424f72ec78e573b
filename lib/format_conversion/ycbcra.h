// From Y, Cb, Cr, A.
// Strides are in bytes and may be negative; width and height are in pixels. To UYVY an odd run reads one pixel beyond
// its end and writes a whole last pair.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace ycbcra {
// Copies, and stores through all_opaque, when given, whether byte 3 of every pixel is 255.
void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
            bool* all_opaque);

// Composited over black.
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);

// Alpha goes to a plane of its own. In each whole block of eight pixels the plane shows A0 A0 A1 A1 A2 A2 A3 A3. Stores
// through all_opaque, when given, whether the picture counts as opaque: only a run with pixels beyond its last whole
// block of eight ever does, and of each block only pixels 0..3 are looked at then.
void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque);
} // namespace ycbcra

} // namespace Processing::FXlib::format_conversion
