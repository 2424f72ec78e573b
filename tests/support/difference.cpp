#include "tests/support/difference.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace quillo::conversions {
namespace {

void print_bytes(std::ostream& text, char const* title, unsigned char const* data, std::size_t from, std::size_t to)
{
    text << '\n' << title << std::hex << std::setfill('0');
    for (std::size_t i = from; i < to; ++i)
        text << ' ' << std::setw(2) << static_cast<int>(data[i]);
    text << std::dec << std::setfill(' ');
}

} // namespace

std::string first_difference(unsigned char const* expected, unsigned char const* got, std::size_t bytes,
                             std::ptrdiff_t origin, int stride, int bytes_per_pixel)
{
    auto const differing = std::mismatch(expected, expected + bytes, got).first;
    if (differing == expected + bytes)
        return {};
    auto const at = static_cast<std::size_t>(differing - expected);
    std::ptrdiff_t const distance = static_cast<std::ptrdiff_t>(at) - origin;
    // The line is told by the stride, as far as that can be.
    std::ptrdiff_t line = stride ? distance / stride : 0;
    if (distance - line * stride < 0)
        line += stride > 0 ? -1 : 1;
    std::ptrdiff_t const byte = distance - line * stride;

    std::ostringstream text;
    text << "line " << line << " byte " << byte << " (pixel " << byte / std::max(bytes_per_pixel, 1) << "): expected "
         << static_cast<int>(expected[at]) << ", got " << static_cast<int>(got[at]);
    std::size_t const from = at / 32 * 32;
    std::size_t const to = std::min(bytes, from + 32);
    print_bytes(text, "expected", expected, from, to);
    print_bytes(text, "got     ", got, from, to);
    text << "\n        ";
    for (std::size_t i = from; i < to; ++i)
        text << "  " << (expected[i] == got[i] ? '.' : 'x');
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < bytes; ++i)
        wrong += expected[i] != got[i];
    text << "\n" << wrong << " of " << bytes << " bytes differ";
    return text.str();
}

} // namespace quillo::conversions
