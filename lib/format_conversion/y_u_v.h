// From 4:2:0 in planes of luma, U and V, a line of chroma for each two whole lines of luma.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace y_u_v {
// To one plane of interleaved chroma.
void y_uv(unsigned char const* y, int y_stride, unsigned char const* u, int u_stride, unsigned char const* v,
          int v_stride, unsigned char* dst_y, int dst_y_stride, unsigned char* dst_uv, int dst_uv_stride, int width,
          int height);

// The same in 4:2:2: each line of chroma twice. An odd height leaves the last line of chroma unwritten.
void y_uv_to422(unsigned char const* y, int y_stride, unsigned char const* u, int u_stride, unsigned char const* v,
                int v_stride, unsigned char* dst_y, int dst_y_stride, unsigned char* dst_uv, int dst_uv_stride,
                int width, int height);
} // namespace y_u_v

} // namespace Processing::FXlib::format_conversion
