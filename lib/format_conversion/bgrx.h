// From B, G, R, X; the fourth byte carries no meaning. A name without a matrix means BT.709; where none is
// involved the names do the same. Strides are in bytes and may be negative; width and height are in pixels. A run is a
// line, or the whole picture where every line follows the one before without a gap; pixel pairs run on across line ends
// then.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace bgrx {
void bgrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);

// A last odd pixel is neither read nor converted.
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);

// Pixels beyond a run's last whole block of eight give their Y and Cr to the run's first pixel; only their Cb and
// fourth byte stand where they belong. A call for a single line wants 16-byte aligned pictures.
void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void crcbyx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgrx

namespace bgrx_601 {
void bgrx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void crcbyx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgrx_601

namespace bgrx_709 {
void bgrx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void crcbyx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgrx_709

} // namespace Processing::FXlib::format_conversion
