// What one line of the benchmark table compares: a conversion of ours and the programs that do the same work.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

// Bytes per 12 pixels of a plane's line, so that every layout is a whole number, and lines per picture line.
struct plane_shape
{
    int bytes_per_12;
    int line_divisor = 1;

    int stride(int width) const { return (width + 11) / 12 * bytes_per_12; }
    int lines(int height) const { return (height + line_divisor - 1) / line_divisor; }
};

constexpr plane_shape bytes_per_pixel(int n) { return {12 * n}; }
constexpr plane_shape half_a_byte_per_pixel{6};
constexpr plane_shape v210_group{32};
constexpr plane_shape half_the_lines(plane_shape plane) { return {plane.bytes_per_12, 2}; }

// One picture and where it goes. Sources of a bottom-up run have negative strides.
struct frame
{
    int width, height;
    unsigned char const* in[3];
    int in_stride[3];
    unsigned char* out[3];
    int out_stride[3];
};

// exact: the same work; close: the same layouts, other rounding, matrix or several passes; less: leaves out part.
enum class job { ours, exact, close, less };

struct candidate
{
    std::string name;
    job work;
    std::function<void(frame const&)> run;
    bool bottom_up = true; // takes negative strides
};

struct row
{
    std::string name;
    std::vector<plane_shape> in, out;
    std::vector<candidate> candidates; // ours first
    bool brief = false;                // only top-down, 1080 lines cold, and hot
};

std::vector<row> rows();

} // namespace bench
