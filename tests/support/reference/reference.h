// The second opinion on every conversion: plain scalar code, written from the rules and not from the kernels.
// Each family has functions on one run of pixels, which the kernels are compared with, and functions on whole pictures
// (taking a call), which the front ends are compared with. No function checks anything.
#pragma once

#include "tests/support/reference/picture.h"

namespace quillo::conversions::reference {

// --- copies.cpp

void copy_bytes(unsigned char const* src, unsigned char* dst, int count);
// Copies four-byte pixels; true when every byte 3 is 255.
bool copy_pixels(unsigned char const* src, unsigned char* dst, int count);

void copy_plane(call const& c, int bytes_per_pixel);
void copy_with_alpha_test(call const& c);

// --- ycbcr444_to_uyvy.cpp: four bytes a pixel, alpha in byte 3

enum class order444 { ycbcr, vuy };

void reorder_to_uyvy(unsigned char const* src, unsigned char* dst, int count, order444 order);
void over_black_to_uyvy(unsigned char const* src, unsigned char* dst, int count, order444 order);
bool split_to_uyvy_a(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int count, order444 order);

void reorder_to_uyvy(call const& c, order444 order);
void over_black_to_uyvy(call const& c, order444 order);
void split_to_uyvy_a(call const& c, order444 order);

// --- rgb_to_uyvy.cpp

enum class rgb_order { bgra, rgba };
enum class matrix { bt601 = 601, bt709 = 709 };

void rgb_to_uyvy(unsigned char const* src, unsigned char* dst, int count, matrix m, rgb_order order);
void premultiplied_rgb_to_uyvy(unsigned char const* src, unsigned char* dst, int count, rgb_order order);
bool rgb_to_uyvy_a(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int count, matrix m,
                   rgb_order order);
void bgr_to_uyvy(unsigned char const* src, unsigned char* dst, int count);

void rgb_to_uyvy(call const& c, matrix m, rgb_order order);
void premultiplied_rgb_to_uyvy(call const& c, rgb_order order);
void rgb_to_uyvy_a(call const& c, matrix m, rgb_order order);
void bgr_to_uyvy(call const& c);

// --- rgb_to_ycbcr444.cpp

enum class fourth_byte { alpha, filler };
enum class ycbcr_order { ycbcr, crcby };

void rgb_to_ycbcr444(unsigned char const* src, unsigned char* dst, int count, matrix m, rgb_order order,
                     ycbcr_order target, fourth_byte fourth);

void rgb_to_ycbcr444(call const& c, matrix m, rgb_order order, ycbcr_order target, fourth_byte fourth);

// --- uyvy_to_rgb.cpp: alpha may be null, the fourth byte is then 255

void uyvy_to_rgba(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count, matrix m,
                  rgb_order order);
void uyvy_to_bgr(unsigned char const* src, unsigned char* dst, int count, matrix m);
void uyvy_to_r_g_b(unsigned char const* src, unsigned char* r, unsigned char* g, unsigned char* b, int count, matrix m);

void uyvy_to_rgba(call const& c, matrix m, rgb_order order);
void uyvy_a_to_rgba(call const& c, matrix m, rgb_order order);
void uyvy_to_bgr(call const& c, matrix m);
void uyvy_to_r_g_b(call const& c, matrix m);

// --- repacking.cpp

void composite_over_black(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count);
void uyvy_a_to_crcbya(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count);

void y_uv_copy(call const& c);
void y_uv_to422(call const& c);
void y_u_v_to_y_uv(call const& c);
void y_u_v_to_y_uv_to422(call const& c);
void swap_bytes(call const& c);
void split_y_uv_422(call const& c);
void split_y_uv_420(call const& c);
void split_y_u_v_422(call const& c);
void split_y_u_v_420(call const& c);
void luma(call const& c);         // option: expand
void luma_to_uyvy(call const& c); // option: compress
void uyvy_to_ycbcrx(call const& c);
void key_to_ya_uv(call const& c); // option: expand
void alpha_to_ya_uv(call const& c);
void composite_over_black(call const& c);
void uyvy_a_to_ycbcra(call const& c);
void uyvy_a_to_crcbya(call const& c);

// --- deep_and_special.cpp

void black_uyvy(call const& c);
void black_alpha(call const& c); // option: value; keeps the first long run's value for the life of the process
void v210_to_uyvy(call const& c);
void p216_to_uyvy(call const& c);
void alpha_u16_to_alpha(call const& c);
void grey_to_bgra(call const& c);

// --- plugin_converters.cpp

void bgra_to_uyvy_a(call const& c);
void yuya_to_uyvy_a(call const& c);
void composite(call const& c);

} // namespace quillo::conversions::reference
