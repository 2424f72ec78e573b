#include "bench/peers/gstreamer.h"
#include "bench/peers/swscale.h"
#include "bench/rows/ours.h"
#include "bench/rows/rows.h"
#include "lib/format_conversion/format_conversion.h"

#include <libyuv.h>

namespace bench {

namespace conversion = Processing::FXlib::format_conversion;

namespace {

candidate libyuv_argb(job work)
{
    return {"libyuv UYVYToARGB", work, [](frame const& f) {
                libyuv::UYVYToARGB(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height);
            }};
}

// The conversion by way of a line of planes, which stays in the cache.
template <class Convert>
candidate libyuv_by_planes(char const* name, Convert convert)
{
    return {name, job::exact, [=](frame const& f) {
                unsigned char *const y = spare_line(0), *const u = spare_line(1), *const v = spare_line(2);
                for (int n = 0; n < f.height; ++n) {
                    libyuv::UYVYToI422(source_line(f, 0, n), 0, y, 0, u, 0, v, 0, f.width, 1);
                    convert(y, u, v, target_line(f, 0, n), f.width);
                }
            }};
}

candidate libyuv_rgb24(libyuv::YuvConstants const& matrix)
{
    return libyuv_by_planes("libyuv UYVYToI422+I422ToRGB24", [&matrix](auto y, auto u, auto v, auto to, int width) {
        libyuv::I422ToRGB24Matrix(y, 0, u, 0, v, 0, to, 0, &matrix, width, 1);
    });
}

candidate planes_of_one_stride()
{
    return {"quillo", job::ours, [](frame const& f) {
                conversion::uyvy::r_g_b_709(f.in[0], f.in_stride[0], f.out[0], f.out[1], f.out[2], f.out_stride[0],
                                            f.width, f.height);
            }};
}

} // namespace

void add_uyvy_to_rgb(std::vector<row>& rows)
{
    std::vector const uyvy{bytes_per_pixel(2)}, uyvy_a{bytes_per_pixel(2), bytes_per_pixel(1)},
        four{bytes_per_pixel(4)}, three{bytes_per_pixel(3)}, planes(3, bytes_per_pixel(1));
    rows.push_back({"uyvy::bgra_709",
                    uyvy,
                    four,
                    {ours<1, 1>(conversion::uyvy::bgra_709), libyuv_argb(job::close),
                     swscale("uyvy422", "bgra", job::close), gstreamer("UYVY", "BGRA", job::exact)}});
    rows.push_back({"uyvy::bgra_601",
                    uyvy,
                    four,
                    {ours<1, 1>(conversion::uyvy::bgra_601), libyuv_argb(job::exact),
                     swscale("uyvy422", "bgra", job::exact), gstreamer("UYVY", "BGRA", job::exact, "bt601")}});
    rows.push_back({"uyvy::rgba_709",
                    uyvy,
                    four,
                    {ours<1, 1>(conversion::uyvy::rgba_709), libyuv_argb(job::close),
                     libyuv_by_planes("libyuv UYVYToI422+H422ToABGR",
                                      [](auto y, auto u, auto v, auto to, int width) {
                                          libyuv::H422ToABGR(y, 0, u, 0, v, 0, to, 0, width, 1);
                                      }),
                     swscale("uyvy422", "rgba", job::close)}});
    rows.push_back({"uyvy::bgr_709",
                    uyvy,
                    three,
                    {ours<1, 1>(conversion::uyvy::bgr_709), libyuv_rgb24(libyuv::kYuvH709Constants),
                     swscale("uyvy422", "bgr24", job::close), gstreamer("UYVY", "BGR", job::exact)}});
    rows.push_back({"uyvy::bgr_601",
                    uyvy,
                    three,
                    {ours<1, 1>(conversion::uyvy::bgr_601), libyuv_rgb24(libyuv::kYuvI601Constants),
                     swscale("uyvy422", "bgr24", job::exact)}});
    rows.push_back({"uyvy_a::bgra_709",
                    uyvy_a,
                    four,
                    {ours<2, 1>(conversion::uyvy_a::bgra_709),
                     {"libyuv UYVYToARGB+ARGBCopyYToAlpha", job::close, [](frame const& f) {
                          for (int n = 0; n < f.height; ++n) {
                              libyuv::UYVYToARGB(source_line(f, 0, n), 0, target_line(f, 0, n), 0, f.width, 1);
                              libyuv::ARGBCopyYToAlpha(source_line(f, 1, n), 0, target_line(f, 0, n), 0, f.width, 1);
                          }
                      }}}});
    rows.push_back(
        {"uyvy::r_g_b_709",
         uyvy,
         planes,
         {planes_of_one_stride(), gstreamer("UYVY", "RGBP", job::exact), swscale("uyvy422", "gbrp", job::close)}});
}

} // namespace bench
