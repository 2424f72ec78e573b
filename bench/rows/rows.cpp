#include "bench/rows/rows.h"

namespace bench {

std::vector<row> rows()
{
    std::vector<row> all;
    add_copies(all);
    add_ycbcr444_to_uyvy(all);
    return all;
}

} // namespace bench
