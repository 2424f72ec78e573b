#include "tests/support/reference/weights.h"

namespace quillo::conversions::reference {

rgb read_rgb(unsigned char const* pixel, rgb_order order)
{
    if (order == rgb_order::rgba)
        return {pixel[0], pixel[1], pixel[2], pixel[3]};
    return {pixel[2], pixel[1], pixel[0], pixel[3]};
}

int weighted(weights const& w, rgb const& p) { return w.r * p.r + w.g * p.g + w.b * p.b; }

weight_set const& weights_of(matrix m)
{
    static weight_set const bt601{{33, 64, 13}, {-38, -75, 112}, {112, -94, -18}};
    static weight_set const bt709{{23, 79, 8}, {-26, -87, 112}, {112, -102, -10}};
    return m == matrix::bt601 ? bt601 : bt709;
}

} // namespace quillo::conversions::reference
