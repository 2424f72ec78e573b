// Finds the front end for two layout names, and says what there is when there is none.
#pragma once

#include "tests/support/conversions.h"

#include <string>

namespace quillo::pictures {

// A layout name with the matrix suffix taken off: "uyvy_709" is uyvy and 709, "y_uv_422" has no matrix.
struct layout
{
    explicit layout(std::string_view name);

    std::string base;
    int matrix = 0; // 601, 709 or none
};

struct choice
{
    conversions::conversion const* row = nullptr;
    int matrix = 0; // for front ends that take it as an argument
};

// The matrix may stand at either name and is 709 without one. Throws request_error, listing what the source reaches.
choice choose(std::string const& from, std::string const& to);

// Every source layout and its targets, a line each.
std::string list_of_conversions();

} // namespace quillo::pictures
