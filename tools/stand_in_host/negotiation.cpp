#include "tools/stand_in_host/negotiation.h"
#include "tools/stand_in_host/frame_ledger.h"

namespace quillo::stand_in {

prFieldType field_type(field_order fields)
{
    switch (fields) {
    case field_order::upper_first:
        return prFieldsUpperFirst;
    case field_order::lower_first:
        return prFieldsLowerFirst;
    default:
        return prFieldsNone;
    }
}

namespace {

bool fits(video_mode const& mode, video_description const& video)
{
    auto same = [](int offered, int ours) { return offered == 0 || offered == ours; };
    bool const any_aspect = mode.pixel_aspect_n == 0 || mode.pixel_aspect_d == 0;
    bool const same_aspect = mode.pixel_aspect_n * video.pixel_aspect_d == video.pixel_aspect_n * mode.pixel_aspect_d;
    bool const same_fields = mode.fields == prFieldsAny || mode.fields == field_type(video.fields);
    return same(mode.width, video.width) && same(mode.height, video.height) && (any_aspect || same_aspect) &&
           same_fields;
}

} // namespace

std::optional<pixel_layout> choose_mode(std::vector<video_mode> const& modes, video_description const& video,
                                        std::optional<pixel_layout> only)
{
    for (video_mode const& mode : modes)
        for (pixel_layout const layout : {pixel_layout::vuya, pixel_layout::bgra})
            if (mode.format == format_code(layout) && (!only || layout == *only) && fits(mode, video))
                return layout;
    return std::nullopt;
}

} // namespace quillo::stand_in
