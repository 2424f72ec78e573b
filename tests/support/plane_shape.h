// What one plane of a conversion holds: the length of its lines, and how far a run of pixels may reach into it.
#pragma once

namespace quillo::conversions {

// Bytes that a run of pixels may touch in a plane, from its first byte on.
enum class reach_rule {
    exact,           // the pixels of the run
    whole_last_pair, // an odd run takes the pixel beyond it too
    whole_pairs,     // an odd run leaves its last pixel alone
    half,            // one byte for each whole pair
    four_bytes_each, // whatever the layout's pixels have
    v210_groups,     // 16 bytes for each group of six that still gives pixels
    v210_pixels,     // the pixels that those groups give
    doubled_tail     // the last (run mod 16) pixels take a pair each
};

enum class line_rule { every, half_rounded_up, half_rounded_down, even_half_rounded_down };

struct plane_shape
{
    bool written = false;
    int bytes_per_pixel = 1;
    reach_rule rule = reach_rule::exact;
    line_rule line_count = line_rule::every;
    int sample_bytes = 1;          // 2 where pointer and stride must be even
    int joins_bytes_per_pixel = 0; // where it is not bytes_per_pixel

    // Length of a tightly packed line.
    int length(int width) const;
    // The stride at which lines join into one run, -1 when none does.
    int joins_at(int width) const;
    // Bytes touched by a run of count pixels.
    long reach(int count) const;
    int lines(int height) const;
};

constexpr plane_shape in(int bytes_per_pixel, reach_rule rule = reach_rule::exact)
{
    return {.written = false, .bytes_per_pixel = bytes_per_pixel, .rule = rule};
}

constexpr plane_shape out(int bytes_per_pixel, reach_rule rule = reach_rule::exact)
{
    return {.written = true, .bytes_per_pixel = bytes_per_pixel, .rule = rule};
}

constexpr plane_shape with_lines(plane_shape shape, line_rule rule)
{
    shape.line_count = rule;
    return shape;
}

constexpr plane_shape joining_at(plane_shape shape, int bytes_per_pixel)
{
    shape.joins_bytes_per_pixel = bytes_per_pixel;
    return shape;
}

constexpr plane_shape of_16_bit_samples(plane_shape shape)
{
    shape.sample_bytes = 2;
    return shape;
}

} // namespace quillo::conversions
