#include "bench/peers/gstreamer.h"
#include "bench/peers/swscale.h"
#include "bench/rows/ours.h"
#include "bench/rows/rows.h"
#include "lib/format_conversion/format_conversion.h"

#include <libyuv.h>

namespace bench {

namespace conversion = Processing::FXlib::format_conversion;

namespace {

unsigned short const* words(unsigned char const* plane)
{
    return static_cast<unsigned short const*>(static_cast<void const*>(plane));
}

} // namespace

void add_deep_and_special(std::vector<row>& rows)
{
    auto const y = bytes_per_pixel(1), uyvy = bytes_per_pixel(2), four = bytes_per_pixel(4);
    rows.push_back({"black::uyvy",
                    {},
                    {uyvy},
                    {ours<0, 1>(conversion::black::uyvy), {"libyuv ARGBRect", job::exact, [](frame const& f) {
                                                               libyuv::ARGBRect(f.out[0], f.out_stride[0], 0, 0,
                                                                                f.width / 2, f.height, 0x10801080);
                                                           }}}});
    rows.push_back({"black::alpha",
                    {},
                    {y},
                    {ours<0, 1>(conversion::black::alpha, 0), {"libyuv SetPlane", job::exact, [](frame const& f) {
                                                                   libyuv::SetPlane(f.out[0], f.out_stride[0], f.width,
                                                                                    f.height, 0);
                                                               }}}});
    rows.push_back({"v210::uyvy",
                    {v210_group},
                    {uyvy},
                    {ours<1, 1>(conversion::v210::uyvy), gstreamer("v210", "UYVY", job::exact)}});
    rows.push_back({"p216::uyvy",
                    {uyvy, uyvy},
                    {uyvy},
                    {{"quillo", job::ours,
                      [](frame const& f) {
                          conversion::p216::uyvy(words(f.in[0]), f.in_stride[0], words(f.in[1]), f.in_stride[1],
                                                 f.out[0], f.out_stride[0], f.width, f.height);
                      }},
                     {"libyuv Convert16To8Plane x2+MergeUVPlane", job::exact,
                      [](frame const& f) {
                          for (int n = 0; n < f.height; ++n) {
                              for (int plane = 0; plane < 2; ++plane)
                                  libyuv::Convert16To8Plane(words(source_line(f, plane, n)), 0, spare_line(plane), 0,
                                                            256, f.width, 1);
                              libyuv::MergeUVPlane(spare_line(1), 0, spare_line(0), 0, target_line(f, 0, n), 0, f.width,
                                                   1);
                          }
                      }},
                     swscale("p216le", "uyvy422", job::close)}});
    rows.push_back({"alpha_u16::alpha",
                    {uyvy},
                    {y},
                    {{"quillo", job::ours,
                      [](frame const& f) {
                          conversion::alpha_u16::alpha(words(f.in[0]), f.in_stride[0], f.out[0], f.out_stride[0],
                                                       f.width, f.height);
                      }},
                     {"libyuv Convert16To8Plane", job::exact,
                      [](frame const& f) {
                          libyuv::Convert16To8Plane(words(f.in[0]), f.in_stride[0] / 2, f.out[0], f.out_stride[0], 256,
                                                    f.width, f.height);
                      }},
                     gstreamer("GRAY16_LE", "GRAY8", job::close)}});
    rows.push_back({"L::bgra",
                    {y},
                    {four},
                    {ours<1, 1>(conversion::L::bgra),
                     {"libyuv J400ToARGB", job::exact,
                      [](frame const& f) {
                          libyuv::J400ToARGB(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height);
                      }},
                     swscale("gray", "bgra", job::exact),
                     gstreamer("GRAY8", "BGRA", job::exact)}});
}

} // namespace bench
