#include "tests/support/contents.h"

#include <algorithm>
#include <cstring>

namespace quillo::conversions {

char const* name(contents kind)
{
    char const* const names[kinds_of_contents] = {"noise",  "extremes",        "edges",         "zeros",      "ones",
                                                  "opaque", "opaque extremes", "almost opaque", "half opaque"};
    return names[static_cast<int>(kind)];
}

void fill(unsigned char* data, std::size_t bytes, contents kind, random_numbers& random)
{
    if (kind == contents::zeros || kind == contents::ones) {
        std::memset(data, kind == contents::ones ? 255 : 0, bytes);
        return;
    }
    for (std::size_t i = 0; i < bytes; i += 8) {
        std::uint64_t const drawn = random.next();
        std::memcpy(data + i, &drawn, std::min<std::size_t>(8, bytes - i));
    }
    static unsigned char const edges[16] = {0, 1, 2, 15, 16, 17, 18, 126, 127, 128, 129, 233, 234, 240, 254, 255};
    if (kind == contents::extremes || kind == contents::opaque_extremes)
        std::transform(data, data + bytes, data, [](unsigned char x) { return x & 1 ? 255 : 0; });
    if (kind == contents::edges)
        std::transform(data, data + bytes, data, [](unsigned char x) { return edges[x % 16]; });
}

} // namespace quillo::conversions
