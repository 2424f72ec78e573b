// From B, G, R, A. A name without a matrix means BT.709; where none is involved the names do the same.
// Strides are in bytes and may be negative; width and height are in pixels. A run is a line, or the whole picture where
// every line follows the one before without a gap; pixel pairs run on across line ends then.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace bgra {
// Copies, and stores through all_opaque, when given, whether byte 3 of every pixel is 255.
void bgra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          bool* all_opaque);

// Composited over black, BT.709. A last odd pixel is neither read nor converted.
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);

// Alpha goes to a plane of its own. Stores through all_opaque, when given, whether every pair of the picture was
// opaque: a line without a pair is not, and a last odd pixel is neither converted nor looked at.
void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque);

// Pixels beyond a run's last whole block of eight give their Y and Cr to the run's first pixel; only their Cb and
// fourth byte stand where they belong. A call for a single line wants 16-byte aligned pictures.
void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void crcbya(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgra

namespace bgra_601 {
void bgra_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque);
void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque);
void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void crcbya(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgra_601

namespace bgra_709 {
void bgra_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque);
void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque);
void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
void crcbya(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height);
} // namespace bgra_709

} // namespace Processing::FXlib::format_conversion
