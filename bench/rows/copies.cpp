#include "bench/peers/gstreamer.h"
#include "bench/peers/swscale.h"
#include "bench/rows/rows.h"
#include "lib/format_conversion/format_conversion.h"

#include <libyuv.h>

namespace bench {

namespace conversion = Processing::FXlib::format_conversion;

void add_copies(std::vector<row>& rows)
{
    auto const libyuv_copy = [](frame const& f) {
        libyuv::ARGBCopy(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height);
    };
    rows.push_back({"bgra::bgra",
                    {bytes_per_pixel(4)},
                    {bytes_per_pixel(4)},
                    {{"quillo", job::ours,
                      [](frame const& f) {
                          bool opaque = false;
                          conversion::bgra::bgra(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height,
                                                 &opaque);
                      }},
                     {"libyuv ARGBCopy", job::less, libyuv_copy},
                     swscale("bgra", "bgra", job::less),
                     gstreamer("BGRA", "BGRA", job::less)}});
    rows.push_back({"bgrx::bgrx",
                    {bytes_per_pixel(4)},
                    {bytes_per_pixel(4)},
                    {{"quillo", job::ours,
                      [](frame const& f) {
                          conversion::bgrx::bgrx(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height);
                      }},
                     {"libyuv ARGBCopy", job::exact, libyuv_copy},
                     swscale("bgra", "bgra", job::exact),
                     gstreamer("BGRA", "BGRA", job::exact)}});
    rows.push_back({"y::y",
                    {bytes_per_pixel(1)},
                    {bytes_per_pixel(1)},
                    {{"quillo", job::ours,
                      [](frame const& f) {
                          conversion::y::y(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height);
                      }},
                     {"libyuv CopyPlane", job::exact,
                      [](frame const& f) {
                          libyuv::CopyPlane(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height);
                      }},
                     swscale("gray", "gray", job::exact),
                     gstreamer("GRAY8", "GRAY8", job::exact)}});
}

} // namespace bench
