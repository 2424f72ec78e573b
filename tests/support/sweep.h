// Which comparisons are made. QUILLO_SWEEP chooses: "reduced" (for an emulated processor), "quick" (the default),
// "full" (every content, stride and offset; takes long).
#pragma once

#include "tests/support/trial.h"

#include <string>
#include <vector>

namespace quillo::conversions {

enum class stride_kind { tight, joining, padded, aligned, negative_tight, negative_padded, negative_aligned, mixed };
inline constexpr int kinds_of_strides = 8;

struct sweep_plan
{
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<int> large_widths; // with few heights
    std::vector<int> large_heights;
    int rounds;               // of everything, with other contents, offsets and places
    int rounds_beyond_caches; // 0: one, for some of the rows
};

sweep_plan const& plan();

trial draw_trial(conversion const& row, int width, int height, stride_kind kind, contents content,
                 random_numbers& random);

// "bgra_709::uyvy_a" as a test's name.
std::string test_name(conversion const& row);

} // namespace quillo::conversions
