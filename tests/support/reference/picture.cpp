#include "tests/support/reference/picture.h"

#include <cstddef>

namespace quillo::conversions::reference {

std::vector<run> runs_of(call const& c, bool joined)
{
    std::vector<run> runs;
    if (c.height < 1)
        return runs;
    run next;
    for (std::size_t i = 0; i < c.planes.size(); ++i)
        next.at[i] = c.planes[i].data;
    if (joined) {
        next.count = static_cast<int>(static_cast<unsigned>(c.width) * static_cast<unsigned>(c.height));
        runs.push_back(next);
        return runs;
    }
    next.count = c.width;
    for (int line = 0; line < c.height; ++line) {
        for (std::size_t i = 0; i < c.planes.size(); ++i)
            if (c.planes[i].data)
                next.at[i] = c.planes[i].data + std::ptrdiff_t{c.planes[i].stride} * line;
        runs.push_back(next);
    }
    return runs;
}

call with_planes(call const& c, std::vector<int> const& chosen)
{
    call result = c;
    result.planes = {};
    for (std::size_t i = 0; i < chosen.size(); ++i)
        result.planes[i] = c.planes[static_cast<std::size_t>(chosen[i])];
    return result;
}

int clamp_to_byte(int value) { return value < 0 ? 0 : value > 255 ? 255 : value; }

} // namespace quillo::conversions::reference
