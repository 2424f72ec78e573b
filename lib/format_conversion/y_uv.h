// From 4:2:0 in a plane of luma and a plane of interleaved chroma, a line of it for each two whole lines of luma.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace y_uv {
// Copies. An odd width drops its last byte of chroma.
void y_uv(unsigned char const* y, int y_stride, unsigned char const* uv, int uv_stride, unsigned char* dst_y,
          int dst_y_stride, unsigned char* dst_uv, int dst_uv_stride, int width, int height);

// To 4:2:2: each line of chroma twice. An odd height leaves the last line of chroma unwritten.
void y_uv_to422(unsigned char const* y, int y_stride, unsigned char const* uv, int uv_stride, unsigned char* dst_y,
                int dst_y_stride, unsigned char* dst_uv, int dst_uv_stride, int width, int height);
} // namespace y_uv

} // namespace Processing::FXlib::format_conversion
