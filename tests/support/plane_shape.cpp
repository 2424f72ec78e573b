#include "tests/support/plane_shape.h"

#include <algorithm>

namespace quillo::conversions {

int plane_shape::length(int width) const
{
    width = std::max(width, 0);
    if (rule == reach_rule::v210_groups)
        return (width + 5) / 6 * 16;
    if (rule == reach_rule::half)
        return width / 2;
    return width * bytes_per_pixel;
}

int plane_shape::joins_at(int width) const
{
    width = std::max(width, 0);
    if (rule == reach_rule::four_bytes_each)
        return width * 4;
    if (rule == reach_rule::v210_groups)
        return width % 3 == 0 ? width * 16 / 6 : -1;
    return joins_bytes_per_pixel ? width * joins_bytes_per_pixel : length(width);
}

long plane_shape::reach(int count) const
{
    long const n = std::max(count, 0);
    switch (rule) {
    case reach_rule::exact:
        break;
    case reach_rule::whole_last_pair:
        return (n + 1) / 2 * 2 * bytes_per_pixel;
    case reach_rule::whole_pairs:
        return n / 2 * 2 * bytes_per_pixel;
    case reach_rule::half:
        return n / 2;
    case reach_rule::four_bytes_each:
        return n * 4;
    case reach_rule::v210_groups:
        return n < 3 ? 0 : (n + 3) / 6 * 16;
    case reach_rule::v210_pixels: {
        if (n < 3)
            return 0;
        long const last = (n - 3) % 6 + 3; // pixels left for the last group: 3 to 8
        return (n - last + (last < 5 ? 2 : last < 7 ? 4 : 6)) * bytes_per_pixel;
    }
    case reach_rule::doubled_tail:
        return n / 16 * 32 + n % 16 * 4;
    }
    return n * bytes_per_pixel;
}

int plane_shape::lines(int height) const
{
    height = std::max(height, 0);
    switch (line_count) {
    case line_rule::every:
        break;
    case line_rule::half_rounded_up:
        return (height + 1) / 2;
    case line_rule::half_rounded_down:
        return height / 2;
    case line_rule::even_half_rounded_down:
        return height / 2 * 2;
    }
    return height;
}

} // namespace quillo::conversions
