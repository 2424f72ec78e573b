// The planes of one side of a conversion, in memory and in a file: there one plane follows the other, without gaps
// between lines.
#pragma once

#include "tests/support/conversions.h"

#include <string>
#include <vector>

namespace quillo::pictures {

using bytes = std::vector<unsigned char>;

struct dimensions
{
    int width = 0;
    int height = 0;
};

inline constexpr int longest_side = 16384;

// "1920x1080". Throws request_error.
dimensions parse_size(std::string const& text);

enum class side { read, written };

// Bytes of a file with one side of a conversion.
std::size_t file_size(conversions::conversion const& row, side which, dimensions size);

// The usual sizes whose file has so many bytes, "1280x720, 1920x1080"; empty when there is none.
std::string usual_sizes(conversions::conversion const& row, side which, std::size_t length);

struct conversion_options
{
    int option = 0;
    bool ask_opaque = false;
    bool tight_strides = false; // else lines are kept apart
    bool bottom_up = false;     // the source is taken from its last line upwards
    bool by_reference = false;  // the plain reference instead of the library
};

struct converted
{
    bytes file;
    bool all_opaque = false; // where it was asked
};

// The source is a file of its side: exactly file_size() bytes.
converted convert(conversions::conversion const& row, bytes const& source, dimensions size,
                  conversion_options const& options);

} // namespace quillo::pictures
