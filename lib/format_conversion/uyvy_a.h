// From packed 4:2:2, Cb Y0 Cr Y1 a pair of pixels, with a plane of alpha bytes beside it.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

#include "lib/format_conversion/color_space.h"

namespace Processing::FXlib::format_conversion {

namespace uyvy_a {
// To RGB in 64ths of a level, as uyvy's four-byte targets. The last pixel of an odd width is left alone.
void bgra_601(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride,
              unsigned char* dst, int dst_stride, int width, int height);
void bgra_709(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride,
              unsigned char* dst, int dst_stride, int width, int height);
void rgba_601(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride,
              unsigned char* dst, int dst_stride, int width, int height);
void rgba_709(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride,
              unsigned char* dst, int dst_stride, int width, int height);
// 601 selects BT.601, every other value BT.709.
void bgra(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
          int dst_stride, int width, int height, e_ycbcr_color_space matrix);
void rgba(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
          int dst_stride, int width, int height, e_ycbcr_color_space matrix);

// Luma and alpha interleaved byte by byte, and the chroma pairs.
void ya_uv(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* ya,
           int ya_stride, unsigned char* uv, int uv_stride, int width, int height);

// Composited over black. An odd width reads and writes its whole last pair, and reads its second alpha.
void uyvy(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
          int dst_stride, int width, int height);

// 4:4:4, both pixels of a pair with the same chroma.
void ycbcra(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
            int dst_stride, int width, int height);
void crcbya(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
            int dst_stride, int width, int height);
} // namespace uyvy_a

} // namespace Processing::FXlib::format_conversion
