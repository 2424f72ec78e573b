#include "tools/quillo/pictures/picture.h"

#include "tools/quillo/pictures/errors.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace quillo::pictures {
namespace {

using conversions::call;
using conversions::conversion;
using conversions::plane_shape;

// Vectors begin at multiples of 16.
constexpr int alignment = 64;

std::size_t plane_size(plane_shape const& shape, dimensions size)
{
    return static_cast<std::size_t>(shape.length(size.width)) * static_cast<std::size_t>(shape.lines(size.height));
}

call call_for(conversion const& row, dimensions size, conversion_options const& options)
{
    call c{.width = size.width, .height = size.height, .option = options.option};
    auto set_strides = [&](int extra) {
        for (std::size_t i = 0; i < row.planes.size(); ++i) {
            int const length = row.planes[i].length(size.width);
            int const reach = static_cast<int>(row.planes[i].reach(size.width));
            int const apart = (std::max(length, reach) + alignment - 1) / alignment * alignment;
            c.planes[i].stride = options.tight_strides ? length : apart + extra;
        }
    };
    set_strides(0);
    // Strides of some front ends join lines although there are gaps between them.
    if (!options.tight_strides && is_joined(row, c))
        set_strides(alignment);
    return c;
}

bytes memory_for(plane_shape const& shape, dimensions size, int stride)
{
    std::size_t const lines = static_cast<std::size_t>(shape.lines(size.height));
    auto const apart = static_cast<std::size_t>(stride) * lines + static_cast<std::size_t>(shape.reach(size.width));
    auto const joined = static_cast<std::size_t>(shape.reach(size.width * size.height));
    return bytes(std::max(apart, joined) + alignment);
}

// Between a file and memory, line by line.
template <class From, class To>
void copy_lines(From from, std::ptrdiff_t from_stride, To to, std::ptrdiff_t to_stride, int length, int lines)
{
    for (int line = 0; line < lines; ++line)
        std::copy_n(from + line * from_stride, length, to + line * to_stride);
}

} // namespace

dimensions parse_size(std::string const& text)
{
    dimensions size;
    int used = 0;
    if (std::sscanf(text.c_str(), "%5dx%5d%n", &size.width, &size.height, &used) != 2 ||
        static_cast<std::size_t>(used) != text.size() || size.width < 1 || size.height < 1 ||
        size.width > longest_side || size.height > longest_side)
        throw request_error{"size " + text + " is none: WIDTHxHEIGHT, each from 1 to " + std::to_string(longest_side) +
                            ", for example 1920x1080"};
    return size;
}

std::size_t file_size(conversion const& row, side which, dimensions size)
{
    std::size_t total = 0;
    for (plane_shape const& shape : row.planes)
        if (shape.written == (which == side::written))
            total += plane_size(shape, size);
    return total;
}

std::string usual_sizes(conversion const& row, side which, std::size_t length)
{
    static dimensions const usual[] = {{640, 480},   {720, 480},   {720, 486},   {720, 576},   {960, 540},
                                       {1280, 720},  {1920, 1080}, {1080, 1920}, {2048, 1080}, {2560, 1440},
                                       {3840, 2160}, {4096, 2160}, {7680, 4320}};
    std::string text;
    for (dimensions const size : usual)
        if (file_size(row, which, size) == length)
            text += (text.empty() ? "" : ", ") + std::to_string(size.width) + 'x' + std::to_string(size.height);
    return text;
}

converted convert(conversion const& row, bytes const& source, dimensions size, conversion_options const& options)
{
    if (source.size() != file_size(row, side::read, size))
        throw input_error{"the picture does not have its size"};
    call c = call_for(row, size, options);
    std::vector<bytes> memory;
    auto in_file = source.begin();
    for (std::size_t i = 0; i < row.planes.size(); ++i) {
        plane_shape const& shape = row.planes[i];
        memory.push_back(memory_for(shape, size, c.planes[i].stride));
        c.planes[i].data = memory.back().data();
        if (shape.written)
            continue;
        int const lines = shape.lines(size.height);
        int const length = shape.length(size.width);
        copy_lines(in_file, length, memory.back().begin(), c.planes[i].stride, length, lines);
        in_file += static_cast<std::ptrdiff_t>(plane_size(shape, size));
        if (options.bottom_up && lines > 0) {
            c.planes[i].data += std::ptrdiff_t{c.planes[i].stride} * (lines - 1);
            c.planes[i].stride = -c.planes[i].stride;
        }
    }

    converted result;
    if (options.ask_opaque)
        c.all_opaque = &result.all_opaque;
    options.by_reference ? row.reference(c) : row.library(c);

    result.file.resize(file_size(row, side::written, size));
    auto out_file = result.file.begin();
    for (std::size_t i = 0; i < row.planes.size(); ++i) {
        plane_shape const& shape = row.planes[i];
        if (!shape.written)
            continue;
        int const length = shape.length(size.width);
        copy_lines(memory[i].begin(), c.planes[i].stride, out_file, length, length, shape.lines(size.height));
        out_file += static_cast<std::ptrdiff_t>(plane_size(shape, size));
    }
    return result;
}

} // namespace quillo::pictures
