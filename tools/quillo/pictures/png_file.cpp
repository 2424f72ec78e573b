#include "tools/quillo/pictures/png_file.h"

#include "tools/quillo/pictures/errors.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace quillo::pictures {
namespace {

// Where each component of a pixel lies: in byte offsets of packed pixels, or in whole planes.
struct png_layout
{
    char const* name;
    int bytes_per_pixel;
    std::array<int, 4> rgba; // -1: not there
    bool planar = false;
};

// Twice an 8K picture: a small file cannot ask for all memory.
constexpr std::size_t most_pixels = std::size_t{1} << 26;

constexpr png_layout layouts[] = {
    {"bgra", 4, {2, 1, 0, 3}},  {"rgba", 4, {0, 1, 2, 3}}, {"bgrx", 4, {2, 1, 0, -1}},
    {"rgbx", 4, {0, 1, 2, -1}}, {"bgr", 3, {2, 1, 0, -1}}, {"r_g_b", 3, {0, 1, 2, -1}, true},
    {"L", 1, {0, -1, -1, -1}},  {"y", 1, {0, -1, -1, -1}}, {"alpha", 1, {0, -1, -1, -1}},
};

png_layout const& layout_of(std::string const& name)
{
    auto const found = std::ranges::find(layouts, name, &png_layout::name);
    if (found == std::end(layouts))
        throw request_error{"a PNG cannot hold " + name + "; it can: " + png_layouts()};
    return *found;
}

// Components that a PNG of this layout has: grey, red green blue, or those with alpha.
int channels_of(png_layout const& l)
{
    return static_cast<int>(std::ranges::count_if(l.rgba, [](int at) { return at >= 0; }));
}

png_uint_32 format_of(png_layout const& l)
{
    int const channels = channels_of(l);
    return channels == 1 ? PNG_FORMAT_GRAY : channels == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_RGBA;
}

std::size_t position(png_layout const& l, std::size_t pixels, std::size_t pixel, int component)
{
    auto const at = static_cast<std::size_t>(component);
    return l.planar ? at * pixels + pixel : pixel * static_cast<std::size_t>(l.bytes_per_pixel) + at;
}

} // namespace

bool is_png(std::filesystem::path const& path) { return path.extension() == ".png"; }

std::string png_layouts()
{
    std::string text;
    for (png_layout const& l : layouts)
        text += (text.empty() ? "" : ", ") + std::string{l.name};
    return text;
}

png_picture read_png(bytes const& file, std::string const& layout)
{
    png_layout const& l = layout_of(layout);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, file.data(), file.size()))
        throw input_error{std::string{"not a PNG: "} + image.message};
    std::size_t const pixels = std::size_t{image.width} * image.height;
    if (image.width > longest_side || image.height > longest_side || pixels > most_pixels) {
        png_image_free(&image);
        throw input_error{"PNG of " + std::to_string(image.width) + 'x' + std::to_string(image.height) +
                          " is too large"};
    }
    image.format = format_of(l);
    bytes decoded(PNG_IMAGE_SIZE(image));
    png_color const black{};
    if (!png_image_finish_read(&image, &black, decoded.data(), 0, nullptr))
        throw input_error{std::string{"broken PNG: "} + image.message};

    png_picture result;
    result.size = {static_cast<int>(image.width), static_cast<int>(image.height)};
    // What has no place in the file, the fourth byte of bgrx for one, is 255.
    result.file.assign(pixels * static_cast<std::size_t>(l.bytes_per_pixel), 255);
    auto in = decoded.begin();
    for (std::size_t pixel = 0; pixel < pixels; ++pixel)
        for (int const component : l.rgba)
            if (component >= 0)
                result.file[position(l, pixels, pixel, component)] = *in++;
    return result;
}

bytes write_png(bytes const& picture, dimensions size, std::string const& layout)
{
    png_layout const& l = layout_of(layout);
    std::size_t const pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    bytes packed;
    packed.reserve(pixels * 4);
    for (std::size_t pixel = 0; pixel < pixels; ++pixel)
        for (int const component : l.rgba)
            if (component >= 0)
                packed.push_back(picture.at(position(l, pixels, pixel, component)));

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(size.width);
    image.height = static_cast<png_uint_32>(size.height);
    image.format = format_of(l);
    png_alloc_size_t length = PNG_IMAGE_PNG_SIZE_MAX(image);
    bytes file(length);
    if (!png_image_write_to_memory(&image, file.data(), &length, 0, packed.data(), 0, nullptr))
        throw std::runtime_error{std::string{"PNG: "} + image.message};
    file.resize(length);
    return file;
}

} // namespace quillo::pictures
