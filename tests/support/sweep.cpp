#include "tests/support/sweep.h"

#include <cctype>
#include <cstdlib>
#include <numeric>
#include <stdexcept>
#include <string_view>

namespace quillo::conversions {
namespace {

std::vector<int> from_to(int first, int last)
{
    std::vector<int> values(static_cast<std::size_t>(last - first + 1));
    std::iota(values.begin(), values.end(), first);
    return values;
}

sweep_plan chosen_plan()
{
    char const* const given = std::getenv("QUILLO_SWEEP");
    std::string_view const wanted = given ? given : "quick";
    std::vector<int> const large{1918, 1919, 1920, 1921, 1922, 3840, 4096};
    if (wanted == "reduced")
        return {from_to(0, 67), {0, 1, 2, 3}, {1920, 1921}, {2}, 1, 0};
    if (wanted == "quick")
        return {from_to(0, 130), from_to(-1, 5), large, {1, 2, 5}, 2, 0};
    if (wanted == "full")
        return {from_to(0, 130), from_to(-1, 5), large, from_to(-1, 5), 40, 2};
    throw std::invalid_argument{"QUILLO_SWEEP is none of reduced, quick, full"};
}

int stride_of(stride_kind kind, plane_shape const& shape, int width, random_numbers& random)
{
    int const length = shape.length(width);
    int const padded = length + (1 + random.below(66)) * shape.sample_bytes;
    int const aligned = (length + 15) / 16 * 16 + 16 * random.below(3);
    int const joining = shape.joins_at(width);
    switch (kind) {
    case stride_kind::tight:
        return length;
    case stride_kind::joining:
        return joining < 0 ? length : joining;
    case stride_kind::padded:
        return padded;
    case stride_kind::aligned:
        return aligned;
    case stride_kind::negative_tight:
        return -length;
    case stride_kind::negative_padded:
        return -padded;
    case stride_kind::negative_aligned:
        return -aligned;
    case stride_kind::mixed:
        break;
    }
    return stride_of(static_cast<stride_kind>(random.below(kinds_of_strides - 1)), shape, width, random);
}

int offset_of(bool aligned, plane_shape const& shape, random_numbers& random)
{
    if (aligned)
        return 16 * random.below(4);
    int const offsets[] = {0, 1, 4, 16, random.below(64), random.below(64)};
    return offsets[random.below(6)] / shape.sample_bytes * shape.sample_bytes;
}

int draw_option(last_argument last, random_numbers& random)
{
    int const matrices[] = {601, 709, 0, 600, 602, 708, 710, -1, 5000};
    int const values[] = {0, 255, 16, -1, 300, random.below(256)};
    switch (last) {
    case last_argument::color_space:
        return matrices[random.below(9)];
    case last_argument::value:
        return values[random.below(6)];
    case last_argument::expand:
    case last_argument::compress:
        return random.below(2);
    case last_argument::none:
    case last_argument::all_opaque:
        break;
    }
    return 0;
}

} // namespace

sweep_plan const& plan()
{
    static sweep_plan const chosen = chosen_plan();
    return chosen;
}

trial draw_trial(conversion const& row, int width, int height, stride_kind kind, contents content,
                 random_numbers& random)
{
    trial t{.row = &row, .width = width, .height = height, .content = content};
    bool const aligned = kind == stride_kind::aligned || kind == stride_kind::negative_aligned || random.below(3) == 0;
    int shared = 0;
    bool have_shared = false;
    for (std::size_t i = 0; i < row.planes.size(); ++i) {
        plane_shape const& shape = row.planes[i];
        t.strides[i] = stride_of(kind, shape, width, random);
        if (shape.written && row.outputs_share_stride) {
            if (have_shared)
                t.strides[i] = shared;
            shared = t.strides[i];
            have_shared = true;
        }
        bool const must = height == 1 && (shape.written ? row.outputs_aligned : row.sources_aligned);
        t.offsets[i] = offset_of(aligned || must, shape, random);
        int const drawn = random.below(6);
        t.places[i] = drawn == 0                                     ? placing::after_unreadable
                      : drawn == 1 || (drawn == 2 && !shape.written) ? placing::before_unreadable
                                                                     : placing::between_guards;
    }
    t.option = draw_option(row.last, random);
    t.ask_opaque = random.below(4) != 0;
    return t;
}

std::string test_name(conversion const& row)
{
    std::string name{row.name};
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return name;
}

} // namespace quillo::conversions
