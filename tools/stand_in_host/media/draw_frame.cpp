#include "tools/stand_in_host/media/draw_frame.h"
#include "tools/stand_in_host/media/component_reader.h"

#include <optional>
#include <vector>

namespace quillo::stand_in {

color_encoding encoding_of(GstVideoInfo const& info)
{
    bool const full = info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255;
    if (GST_VIDEO_INFO_IS_RGB(&info))
        return {true, 0, 0, info.colorimetry.range != GST_VIDEO_COLOR_RANGE_16_235};
    double kr = 0;
    double kb = 0;
    if (!gst_video_color_matrix_get_Kr_Kb(info.colorimetry.matrix, &kr, &kb)) {
        color_encoding const& usual = info.height > 576 ? bt709_limited : bt601_limited;
        kr = usual.kr;
        kb = usual.kb;
    }
    return {false, kr, kb, full};
}

namespace {

void interleave(unsigned char const* a, unsigned char const* b, unsigned char const* c, unsigned char const* d,
                unsigned char* __restrict to, int count)
{
    for (int x = 0; x < count; ++x) {
        to[4 * x] = a[x];
        to[4 * x + 1] = b[x];
        to[4 * x + 2] = c[x];
        to[4 * x + 3] = d[x];
    }
}

} // namespace

void draw_frame(GstVideoFrame const& frame, bool interlaced, picture_view const& target)
{
    auto const width = static_cast<std::size_t>(target.width);
    int const components = static_cast<int>(GST_VIDEO_FRAME_N_COMPONENTS(&frame));
    color_matrix const matrix(encoding_of(frame.info), target.layout == pixel_layout::vuya ? bt709_limited : rgb_full);

    std::vector<unsigned char> const opaque(width, 255);
    std::vector<unsigned char> const no_chroma(width, 128);
    std::vector<unsigned char> converted(matrix.is_identity() ? 0 : 3 * width);

    std::optional<component_reader> readers[4];
    for (int k = 0; k < components; ++k)
        readers[k].emplace(frame, k, interlaced);

    for (int y = 0; y < target.height; ++y) {
        component_lines lines{{readers[0]->line(y), no_chroma.data(), no_chroma.data()}};
        for (int k = 1; k < 3 && components >= 3; ++k)
            lines.c[k] = readers[k]->line(y);
        unsigned char const* const alpha = components == 4 ? readers[3]->line(y) : opaque.data();
        if (!matrix.is_identity()) {
            component_targets const to{{converted.data(), converted.data() + width, converted.data() + 2 * width}};
            matrix.apply(lines, to, target.width);
            lines = {{to.c[0], to.c[1], to.c[2]}};
        }
        // V, U, Y and B, G, R: in memory both layouts have the components last to first.
        interleave(lines.c[2], lines.c[1], lines.c[0], alpha, target.row(y), target.width);
    }
}

} // namespace quillo::stand_in
