#include "lib/format_conversion/black.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/fill.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace black {
namespace {

// The value of the first call.
unsigned char kept(unsigned char value)
{
    static unsigned char const black = value;
    return black;
}

} // namespace

void uyvy(unsigned char* dst, int dst_stride, int width, int height)
{
    long long const written = width * 2ll + width % 16 * 2;
    walk(width, height, by_alignment<line::fill_black>(true, is_aligned(dst, dst_stride)),
         plane{dst, dst_stride, width * 2ll, written});
}

void alpha(unsigned char* dst, int dst_stride, int width, int height, int value)
{
    auto const fill = [kernel = by_alignment<line::fill_bytes>(true, is_aligned(dst, dst_stride)),
                       rest = static_cast<unsigned char>(value)](unsigned char* line, int count, line::access how) {
        kernel(line, count < 32 ? rest : kept(rest), rest, count, how);
    };
    walk(width, height, fill, plane{dst, dst_stride, width});
}
} // namespace black

} // namespace Processing::FXlib::format_conversion
