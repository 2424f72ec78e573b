#include "bench/rows/rows.h"

namespace bench {

std::vector<row> rows()
{
    std::vector<row> all;
    add_copies(all);
    add_ycbcr444_to_uyvy(all);
    add_from_rgb(all);
    add_uyvy_to_rgb(all);
    add_repacking(all);
    add_deep_and_special(all);
    add_rest_of_table(all);
    return all;
}

} // namespace bench
