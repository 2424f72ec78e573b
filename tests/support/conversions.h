// The one table of conversions, a row per front end. Tests, benchmarks and `quillo convert` read it.
#pragma once

#include "tests/support/call.h"
#include "tests/support/plane_shape.h"

#include <functional>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace quillo::conversions {

// What a front end takes after width and height; a call holds it in option, or points to it with all_opaque.
enum class last_argument { none, all_opaque, color_space, expand, compress, value };

struct conversion
{
    std::string_view name; // as in code, without the library's namespace: "bgra_709::uyvy_a"
    std::vector<plane_shape> planes;
    last_argument last = last_argument::none;
    void (*library)(call const&) = nullptr;
    std::function<void(call const&)> reference;

    bool returns_opaque = false;  // all_opaque must point somewhere and receives the result
    bool joins_lines = true;      // tight strides make one run of the picture
    bool sources_aligned = false; // a single line must be given aligned to 16 bytes
    bool outputs_aligned = false;
    bool outputs_share_stride = false; // one stride argument for all written planes

    std::string_view source() const;
    std::string_view target() const;
};

// A table of what each of these adds to it.
std::vector<conversion> gathered(std::initializer_list<void (*)(std::vector<conversion>&)> families);

std::vector<conversion> const& all();

// Null when there is none of that name.
conversion const* find(std::string_view name);

// Whether the call is converted as one run.
bool is_joined(conversion const& row, call const& c);

} // namespace quillo::conversions
