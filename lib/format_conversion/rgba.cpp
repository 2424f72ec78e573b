#include "lib/format_conversion/rgba.h"

#include "lib/format_conversion/bgra.h"

namespace Processing::FXlib::format_conversion {

namespace rgba {
void rgba(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}
} // namespace rgba

namespace rgba_601 {
void rgba_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}
} // namespace rgba_601

namespace rgba_709 {
void rgba_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}
} // namespace rgba_709

} // namespace Processing::FXlib::format_conversion
