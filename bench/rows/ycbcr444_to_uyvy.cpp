#include "Plugins/Plugins.AdobeCC.Transmit/format_conversion.h"
#include "bench/peers/gstreamer.h"
#include "bench/rows/ours.h"
#include "bench/rows/rows.h"
#include "lib/format_conversion/format_conversion.h"

namespace bench {

namespace conversion = Processing::FXlib::format_conversion;

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
                    {ours<1, 1>(conversion::vuyx::uyvy), gstreamer("AYUV", "UYVY", job::close),
                     gstreamer("VUYA", "UYVY", job::exact)}});
    rows.push_back(
        {"ycbcrx::uyvy", pixel, uyvy, {ours<1, 1>(conversion::ycbcrx::uyvy), gstreamer("AYUV", "UYVY", job::close)}});
    rows.push_back({"convert_YUYA_to_UYVY_A",
                    pixel,
                    uyvy_a,
                    {ours<1, 2>(convert_YUYA_to_UYVY_A), gstreamer("AYUV", "UYVY", job::less),
                     gstreamer("VUYA", "UYVY", job::less)}});
    rows.push_back({"vuya::uyvy", pixel, uyvy, {ours<1, 1>(conversion::vuya::uyvy)}});
    rows.push_back({"ycbcra::uyvy", pixel, uyvy, {ours<1, 1>(conversion::ycbcra::uyvy)}});
}

} // namespace bench
