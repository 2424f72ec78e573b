#include "tools/stand_in_host/media/orientation.h"

#include <cstring>
#include <utility>

namespace quillo::stand_in {

orientation parse_orientation(std::string_view tag)
{
    orientation result;
    if (constexpr std::string_view flip = "flip-"; tag.starts_with(flip)) {
        result.mirrored = true;
        tag.remove_prefix(flip.size());
    }
    static constexpr std::string_view turns[] = {"rotate-0", "rotate-90", "rotate-180", "rotate-270"};
    for (int k = 0; k < 4; ++k)
        if (tag == turns[k])
            return {result.mirrored, k};
    return {};
}

void copy_upright(picture_view const& stored, orientation how, picture_view const& shown)
{
    // Where a shown pixel comes from.
    auto origin = [&](int x, int y) -> std::pair<int, int> {
        int const right = stored.width - 1;
        int const bottom = stored.height - 1;
        std::pair<int, int> from;
        switch (how.quarter_turns) {
        case 1:
            from = {y, bottom - x};
            break;
        case 2:
            from = {right - x, bottom - y};
            break;
        case 3:
            from = {right - y, x};
            break;
        default:
            from = {x, y};
        }
        return how.mirrored ? std::pair(right - from.first, from.second) : from;
    };
    for (int y = 0; y < shown.height; ++y)
        for (int x = 0; x < shown.width; ++x) {
            auto const [from_x, from_y] = origin(x, y);
            std::memcpy(shown.row(y) + x * bytes_per_pixel, stored.row(from_y) + from_x * bytes_per_pixel,
                        bytes_per_pixel);
        }
}

} // namespace quillo::stand_in
