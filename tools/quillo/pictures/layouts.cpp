#include "tools/quillo/pictures/layouts.h"

#include "tools/quillo/pictures/errors.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>

namespace quillo::pictures {
namespace {

using conversions::conversion;
using conversions::last_argument;

constexpr std::array rgb_layouts{"bgra", "rgba", "bgrx", "rgbx", "bgr", "r_g_b"};
constexpr std::array ycbcr_layouts{"uyvy", "uyvy_a", "ycbcra", "ycbcrx", "crcbya", "crcbyx"};

bool is_among(auto const& names, std::string const& name) { return std::ranges::find(names, name) != names.end(); }

bool uses_a_matrix(layout const& source, layout const& target)
{
    return (is_among(rgb_layouts, source.base) && is_among(ycbcr_layouts, target.base)) ||
           (is_among(ycbcr_layouts, source.base) && is_among(rgb_layouts, target.base));
}

bool is_library_row(conversion const& row) { return !row.target().empty(); }

// The matrices that a row can do; none where it needs none.
std::set<int> matrices_of(conversion const& row)
{
    layout const source{row.source()};
    layout const target{row.target()};
    if (!uses_a_matrix(source, target))
        return {};
    if (row.last == last_argument::color_space)
        return {601, 709};
    return {source.matrix ? source.matrix : target.matrix ? target.matrix : 709};
}

std::map<std::string, std::set<int>> targets_of(std::string const& source)
{
    std::map<std::string, std::set<int>> targets;
    for (conversion const& row : conversions::all())
        if (is_library_row(row) && layout{row.source()}.base == source)
            targets[layout{row.target()}.base].merge(matrices_of(row));
    return targets;
}

std::string list_of_targets(std::string const& source)
{
    std::string text;
    for (auto const& [target, matrices] : targets_of(source)) {
        text += (text.empty() ? "" : ", ") + target;
        if (matrices.size() == 1)
            text += " (" + std::to_string(*matrices.begin()) + " only)";
    }
    return text;
}

std::set<std::string> sources()
{
    std::set<std::string> names;
    for (conversion const& row : conversions::all())
        if (is_library_row(row))
            names.insert(layout{row.source()}.base);
    return names;
}

} // namespace

layout::layout(std::string_view name) : base(name)
{
    for (int const number : {601, 709}) {
        std::string const suffix = '_' + std::to_string(number);
        if (base.ends_with(suffix)) {
            base.resize(base.size() - suffix.size());
            matrix = number;
            break;
        }
    }
}

choice choose(std::string const& from, std::string const& to)
{
    layout const source{from};
    layout const target{to};
    if (source.matrix && target.matrix && source.matrix != target.matrix)
        throw request_error{"the matrix cannot change from " + from + " to " + to};
    if (!sources().contains(source.base))
        throw request_error{"no layout " + from + " to convert from; there are:\n" + list_of_conversions()};

    int const matrix = source.matrix ? source.matrix : target.matrix ? target.matrix : 709;
    for (conversion const& row : conversions::all()) {
        if (!is_library_row(row) || layout{row.source()}.base != source.base ||
            layout{row.target()}.base != target.base)
            continue;
        std::set<int> const possible = matrices_of(row);
        if (possible.empty() || possible.contains(matrix))
            return {&row, matrix};
    }
    throw request_error{"no conversion from " + from + " to " + to + "; from " + source.base +
                        " there are: " + list_of_targets(source.base)};
}

std::string list_of_conversions()
{
    std::string text;
    for (std::string const& source : sources())
        text += "  " + source + " to " + list_of_targets(source) + '\n';
    return text;
}

} // namespace quillo::pictures
