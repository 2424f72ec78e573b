#include "Plugins/Plugins.AdobeCC.Transmit/format_conversion.h"

#include "Plugins/Plugins.AdobeCC.Transmit/format_conversion_lines.h"
#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"

#pragma GCC diagnostic ignored "-Wignored-qualifiers"

using namespace Processing::FXlib::format_conversion::detail;
using Processing::FXlib::format_conversion::is_aligned;
namespace line = Processing::FXlib::format_conversion::line;

namespace {

template <class Kernel>
bool split(bool src_aligned, bool dst_aligned, unsigned char const* src, int src_stride, unsigned char* dst,
           int dst_stride, unsigned char* alpha, int alpha_stride, int width, int height)
{
    return walk<runs::lines>(width, height, by_alignment<Kernel>(src_aligned, dst_aligned),
                             plane{src, src_stride, width * 4ll},
                             plane{dst, dst_stride, width * 2ll, whole_pairs(width)},
                             plane{alpha, alpha_stride, width, whole_pairs(width) / 2}) == line::opaque_word;
}

void blend(bool src_aligned, bool dst_aligned, unsigned char const* fg, int fg_stride, unsigned char const* alpha,
           int alpha_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    walk<runs::lines>(width, height, by_alignment<line::blend_uyvy>(src_aligned, dst_aligned),
                      plane{fg, fg_stride, width * 2ll}, plane{alpha, alpha_stride, width},
                      plane{dst, dst_stride, width * 2ll});
}

} // namespace

template <bool src_aligned, bool dst_aligned>
bool const convert_BGRA_to_UYVY_A_impl(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                                       unsigned char* alpha, int alpha_stride, int width, int height)
{
    return split<line::split_bgra>(src_aligned, dst_aligned, src, src_stride, dst, dst_stride, alpha, alpha_stride,
                                   width, height);
}

template <bool src_aligned, bool dst_aligned>
bool const convert_YUYA_to_UYVY_A_impl(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                                       unsigned char* alpha, int alpha_stride, int width, int height)
{
    return split<line::split_yuya>(src_aligned, dst_aligned, src, src_stride, dst, dst_stride, alpha, alpha_stride,
                                   width, height);
}

template <bool src_aligned, bool dst_aligned>
void composite_impl(unsigned char const* fg, int fg_stride, unsigned char const* alpha, int alpha_stride,
                    unsigned char* dst, int dst_stride, int width, int height)
{
    blend(src_aligned, dst_aligned, fg, fg_stride, alpha, alpha_stride, dst, dst_stride, width, height);
}

// The alpha plane is written eight bytes at a time and has no say.
bool convert_BGRA_to_UYVY_A(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                            unsigned char* alpha, int alpha_stride, int width, int height)
{
    return split<line::split_bgra>(is_aligned(src, src_stride), is_aligned(dst, dst_stride), src, src_stride, dst,
                                   dst_stride, alpha, alpha_stride, width, height);
}

bool convert_YUYA_to_UYVY_A(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                            unsigned char* alpha, int alpha_stride, int width, int height)
{
    return split<line::split_yuya>(is_aligned(src, src_stride), is_aligned(dst, dst_stride), src, src_stride, dst,
                                   dst_stride, alpha, alpha_stride, width, height);
}

void composite(unsigned char const* fg, int fg_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
               int dst_stride, int width, int height)
{
    blend(is_aligned(fg, fg_stride, alpha, alpha_stride), is_aligned(dst, dst_stride), fg, fg_stride, alpha,
          alpha_stride, dst, dst_stride, width, height);
}

// clang-format off
#define INSTANCE(...) \
    template bool const convert_BGRA_to_UYVY_A_impl<__VA_ARGS__>(unsigned char const*, int, unsigned char*, int, unsigned char*, int, int, int); \
    template bool const convert_YUYA_to_UYVY_A_impl<__VA_ARGS__>(unsigned char const*, int, unsigned char*, int, unsigned char*, int, int, int); \
    template void composite_impl<__VA_ARGS__>(unsigned char const*, int, unsigned char const*, int, unsigned char*, int, int, int);
INSTANCE(false, false)
INSTANCE(false, true)
INSTANCE(true, false)
INSTANCE(true, true)
// clang-format on
