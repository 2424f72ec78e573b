// PNG files as pictures of a layout: red, green, blue and alpha, or grey.
#pragma once

#include "tools/quillo/pictures/picture.h"

#include <filesystem>
#include <string>

namespace quillo::pictures {

struct png_picture
{
    dimensions size;
    bytes file; // planes one after the other, as in a raw file of the layout
};

bool is_png(std::filesystem::path const& path);

// "bgra, rgba, ..."
std::string png_layouts();

// Throw request_error when the layout cannot be a PNG, input_error when the file cannot be read.
png_picture read_png(bytes const& file, std::string const& layout);
bytes write_png(bytes const& picture, dimensions size, std::string const& layout);

} // namespace quillo::pictures
