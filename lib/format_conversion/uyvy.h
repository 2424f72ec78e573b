// From packed 4:2:2, Cb Y0 Cr Y1 a pair of pixels.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

#include "lib/format_conversion/color_space.h"

namespace Processing::FXlib::format_conversion {

namespace uyvy {
// To RGB. Four-byte targets get alpha 255. The four-byte and planar targets are reckoned in 64ths of a level, reach 253
// for white and leave the last pixel of an odd width alone; bgr is exact to a 256th, reads the whole last pair of an
// odd width and writes it, three bytes beyond the line. So the same pixel differs between the two.
void bgra_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void bgra_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void rgba_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void rgba_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void bgrx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void bgrx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void rgbx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void rgbx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void bgr_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void bgr_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void r_g_b_601(unsigned char const* src, int src_stride, unsigned char* r, unsigned char* g, unsigned char* b,
               int plane_stride, int width, int height);
void r_g_b_709(unsigned char const* src, int src_stride, unsigned char* r, unsigned char* g, unsigned char* b,
               int plane_stride, int width, int height);

// 601 selects BT.601, every other value BT.709.
void bgra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          e_ycbcr_color_space matrix);
void rgba(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          e_ycbcr_color_space matrix);
void bgrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          e_ycbcr_color_space matrix);
void rgbx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          e_ycbcr_color_space matrix);
void bgr(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
         e_ycbcr_color_space matrix);
// 709 selects BT.709, every other value BT.601.
void r_g_b(unsigned char const* src, int src_stride, unsigned char* r, unsigned char* g, unsigned char* b,
           int plane_stride, int width, int height, e_ycbcr_color_space matrix);

// Copies; the planes must not overlap.
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);

// Y0 Cb Y1 Cr.
void yuy2(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);

// A plane of luma and planes of chroma: Cb, Cr interleaved, as many bytes as pixels, or one of each, a byte for each
// whole pair. For 4:2:0 chroma is that of the even lines, so an odd height gives one line more than half of it.
void y_uv_422(unsigned char const* src, int src_stride, unsigned char* y, int y_stride, unsigned char* uv,
              int uv_stride, int width, int height);
void y_uv_420(unsigned char const* src, int src_stride, unsigned char* y, int y_stride, unsigned char* uv,
              int uv_stride, int width, int height);
void y_u_v_422(unsigned char const* src, int src_stride, unsigned char* y, int y_stride, unsigned char* u, int u_stride,
               unsigned char* v, int v_stride, int width, int height);
void y_u_v_420(unsigned char const* src, int src_stride, unsigned char* y, int y_stride, unsigned char* u, int u_stride,
               unsigned char* v, int v_stride, int width, int height);

// The plane of luma. With expand 17..234 become 0..255; the pixels behind the last whole 32 of a run are then either
// black (up to 17) or white.
void y(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
       bool expand);

// 4:4:4, both pixels of a pair with the same chroma; the fourth byte is 255.
void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);

// Luma and alpha interleaved byte by byte, and the chroma pairs. Alpha is the luma of key, a UYVY picture of the same
// size; with expand its 17..234 become 0..255, while the luma of src stays as it is.
void ya_uv(unsigned char const* src, int src_stride, unsigned char const* key, int key_stride, unsigned char* ya,
           int ya_stride, unsigned char* uv, int uv_stride, int width, int height, bool expand);
} // namespace uyvy

} // namespace Processing::FXlib::format_conversion
