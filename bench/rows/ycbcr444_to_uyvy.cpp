#include "bench/peers/gstreamer.h"
#include "bench/rows/rows.h"
#include "lib/format_conversion/format_conversion.h"

namespace bench {

namespace conversion = Processing::FXlib::format_conversion;

namespace {

template <auto convert>
candidate split_alpha(bool tested)
{
    return {"quillo", job::ours, [=](frame const& f) {
                bool opaque = false;
                convert(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.out[1], f.out_stride[1], f.width,
                        f.height, tested ? &opaque : nullptr);
            }};
}

template <auto convert>
candidate to_uyvy()
{
    return {"quillo", job::ours,
            [](frame const& f) { convert(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height); }};
}

} // namespace

void add_ycbcr444_to_uyvy(std::vector<row>& rows)
{
    std::vector const pixel{bytes_per_pixel(4)}, uyvy{bytes_per_pixel(2)},
        uyvy_a{bytes_per_pixel(2), bytes_per_pixel(1)};
    rows.push_back({"vuya::uyvy_a",
                    pixel,
                    uyvy_a,
                    {split_alpha<conversion::vuya::uyvy_a>(true), gstreamer("AYUV", "UYVY", job::less),
                     gstreamer("VUYA", "UYVY", job::less)}});
    rows.push_back({"vuya::uyvy_a/null",
                    pixel,
                    uyvy_a,
                    {split_alpha<conversion::vuya::uyvy_a>(false), gstreamer("AYUV", "UYVY", job::less)}});
    rows.push_back({"ycbcra::uyvy_a",
                    pixel,
                    uyvy_a,
                    {split_alpha<conversion::ycbcra::uyvy_a>(true), gstreamer("AYUV", "UYVY", job::less)}});
    rows.push_back({"vuyx::uyvy",
                    pixel,
                    uyvy,
                    {to_uyvy<conversion::vuyx::uyvy>(), gstreamer("AYUV", "UYVY", job::close),
                     gstreamer("VUYA", "UYVY", job::exact)}});
    rows.push_back(
        {"ycbcrx::uyvy", pixel, uyvy, {to_uyvy<conversion::ycbcrx::uyvy>(), gstreamer("AYUV", "UYVY", job::close)}});
    rows.push_back({"vuya::uyvy", pixel, uyvy, {to_uyvy<conversion::vuya::uyvy>()}});
    rows.push_back({"ycbcra::uyvy", pixel, uyvy, {to_uyvy<conversion::ycbcra::uyvy>()}});
}

} // namespace bench
