#include "Plugins/Plugins.AdobeCC.Transmit/format_conversion.h"
#include "bench/peers/gstreamer.h"
#include "bench/peers/swscale.h"
#include "bench/rows/ours.h"
#include "bench/rows/rows.h"
#include "lib/format_conversion/format_conversion.h"

#include <libyuv.h>

namespace bench {

namespace conversion = Processing::FXlib::format_conversion;

namespace {

std::vector const four{bytes_per_pixel(4)}, three{bytes_per_pixel(3)}, uyvy{bytes_per_pixel(2)};
std::vector const uyvy_a{bytes_per_pixel(2), bytes_per_pixel(1)};

// BT.601, chroma averaged over the pair.
candidate libyuv_uyvy()
{
    return {"libyuv ARGBToUYVY", job::close, [](frame const& f) {
                libyuv::ARGBToUYVY(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height);
            }};
}

// What takes two steps, line by line, so that the line between them stays in the cache.
template <class Convert>
candidate libyuv_lines(char const* name, Convert convert)
{
    return {name, job::close, [=](frame const& f) {
                for (int n = 0; n < f.height; ++n)
                    convert(source_line(f, 0, n), f, n);
            }};
}

candidate libyuv_uyvy_a()
{
    return libyuv_lines("libyuv ARGBToUYVY+ARGBExtractAlpha", [](auto const* from, frame const& f, int n) {
        libyuv::ARGBToUYVY(from, 0, target_line(f, 0, n), 0, f.width, 1);
        libyuv::ARGBExtractAlpha(from, 0, target_line(f, 1, n), 0, f.width, 1);
    });
}

candidate libyuv_premultiplied()
{
    return libyuv_lines("libyuv ARGBAttenuate+ARGBToUYVY", [](auto const* from, frame const& f, int n) {
        libyuv::ARGBAttenuate(from, 0, spare_line(0), 0, f.width, 1);
        libyuv::ARGBToUYVY(spare_line(0), 0, target_line(f, 0, n), 0, f.width, 1);
    });
}

candidate libyuv_bgr()
{
    return libyuv_lines("libyuv RGB24ToARGB+ARGBToUYVY", [](auto const* from, frame const& f, int n) {
        libyuv::RGB24ToARGB(from, 0, spare_line(0), 0, f.width, 1);
        libyuv::ARGBToUYVY(spare_line(0), 0, target_line(f, 0, n), 0, f.width, 1);
    });
}

// The same dot products in 64ths, without the offsets.
candidate libyuv_matrix()
{
    return {"libyuv ARGBColorMatrix", job::close, [](frame const& f) {
                static constexpr signed char matrix[16] = {4, 40, 12, 0, 28, -22, -6, 0, -2, -26, 28, 0, 0, 0, 0, 64};
                libyuv::ARGBColorMatrix(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], matrix, f.width, f.height);
            }};
}

} // namespace

void add_from_rgb(std::vector<row>& rows)
{
    rows.push_back({"bgrx_709::uyvy",
                    four,
                    uyvy,
                    {ours<1, 1>(conversion::bgrx_709::uyvy), libyuv_uyvy(), swscale("bgr0", "uyvy422", job::close),
                     gstreamer("BGRx", "UYVY", job::exact)}});
    rows.push_back(
        {"bgrx_601::uyvy",
         four,
         uyvy,
         {ours<1, 1>(conversion::bgrx_601::uyvy), libyuv_uyvy(), gstreamer("BGRx", "UYVY", job::exact, "bt601")}});
    rows.push_back({"rgbx_709::uyvy",
                    four,
                    uyvy,
                    {ours<1, 1>(conversion::rgbx_709::uyvy), gstreamer("RGBx", "UYVY", job::exact)}});
    rows.push_back(
        {"bgra::uyvy",
         four,
         uyvy,
         {ours<1, 1>(conversion::bgra::uyvy), libyuv_premultiplied(), gstreamer("BGRA", "UYVY", job::less)}});
    rows.push_back(
        {"bgra_709::uyvy_a",
         four,
         uyvy_a,
         {split_alpha<conversion::bgra_709::uyvy_a>(true), libyuv_uyvy_a(), gstreamer("BGRA", "UYVY", job::less)}});
    rows.push_back(
        {"bgra_709::uyvy_a/null",
         four,
         uyvy_a,
         {split_alpha<conversion::bgra_709::uyvy_a>(false), libyuv_uyvy_a(), gstreamer("BGRA", "UYVY", job::less)}});
    rows.push_back({"convert_BGRA_to_UYVY_A",
                    four,
                    uyvy_a,
                    {ours<1, 2>(convert_BGRA_to_UYVY_A), libyuv_uyvy_a(), gstreamer("BGRA", "UYVY", job::less)}});
    rows.push_back({"bgr::uyvy",
                    three,
                    uyvy,
                    {ours<1, 1>(conversion::bgr::uyvy), libyuv_bgr(), swscale("bgr24", "uyvy422", job::close),
                     gstreamer("BGR", "UYVY", job::exact)}});
    rows.push_back(
        {"bgra_709::ycbcra",
         four,
         four,
         {ours<1, 1>(conversion::bgra_709::ycbcra), libyuv_matrix(), gstreamer("BGRA", "AYUV", job::close)}});
    rows.push_back(
        {"bgra_709::crcbya",
         four,
         four,
         {ours<1, 1>(conversion::bgra_709::crcbya), libyuv_matrix(), gstreamer("BGRA", "VUYA", job::exact)}});
    rows.push_back(
        {"bgrx_601::ycbcrx",
         four,
         four,
         {ours<1, 1>(conversion::bgrx_601::ycbcrx), libyuv_matrix(), gstreamer("BGRx", "AYUV", job::close, "bt601")}});
}

} // namespace bench
