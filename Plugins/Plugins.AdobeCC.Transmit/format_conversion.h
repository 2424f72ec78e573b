// The plug-in's own converters of packed pixels. They go line by line; strides are in bytes and may be negative. Where
// an odd width is told to take a whole last pair, a line reads one pixel beyond its end and writes one alpha and one
// UYVY group beyond it, so planes hold the width rounded up to even. Any number of threads may convert at once.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/exported.h"

// The workers' results are spelled with their const.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-qualifiers"

// B, G, R, A to UYVY (BT.709, U from the even and V from the odd pixel of a pair) and a plane of alphas. An odd width
// takes a whole last pair. The result is whether the picture counts as opaque: every alpha is 255, some line has eight
// pixels, and neither pixel 0 nor pixel 4 of all blocks of eight has blue 255 throughout.
QUILLO_EXPORTED bool convert_BGRA_to_UYVY_A(unsigned char const* src, int src_stride, unsigned char* dst,
                                            int dst_stride, unsigned char* alpha, int alpha_stride, int width,
                                            int height);

// Cr, Cb, Y, A to UYVY (chroma of the even pixel of a pair) and a plane of alphas. An odd width takes a whole last
// pair. The result is whether the picture counts as opaque: every alpha is 255 and some line has eight pixels.
QUILLO_EXPORTED bool convert_YUYA_to_UYVY_A(unsigned char const* src, int src_stride, unsigned char* dst,
                                            int dst_stride, unsigned char* alpha, int alpha_stride, int width,
                                            int height);

// Blends the UYVY picture fg by its plane of alphas over the UYVY picture dst, in place. Pixels beyond a line's last
// whole block of eight become 0 where alpha is 0 or 255.
QUILLO_EXPORTED void composite(unsigned char const* fg, int fg_stride, unsigned char const* alpha, int alpha_stride,
                               unsigned char* dst, int dst_stride, int width, int height);

// The workers: the flags promise that source and UYVY lines start at multiples of 16.
template <bool src_aligned, bool dst_aligned>
bool const convert_BGRA_to_UYVY_A_impl(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                                       unsigned char* alpha, int alpha_stride, int width, int height);
template <bool src_aligned, bool dst_aligned>
bool const convert_YUYA_to_UYVY_A_impl(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                                       unsigned char* alpha, int alpha_stride, int width, int height);
template <bool src_aligned, bool dst_aligned>
void composite_impl(unsigned char const* fg, int fg_stride, unsigned char const* alpha, int alpha_stride,
                    unsigned char* dst, int dst_stride, int width, int height);

#pragma GCC diagnostic pop
