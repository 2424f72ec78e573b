// RGB to YCbCr weights. Luma sums have the scale 1/128 where not said otherwise, chroma sums 1/256.
#pragma once

#include "tests/support/reference/reference.h"

namespace quillo::conversions::reference {

struct rgb
{
    int r, g, b, a;
};

struct weights
{
    int r, g, b;
};

struct weight_set
{
    weights luma, cb, cr;
};

rgb read_rgb(unsigned char const* pixel, rgb_order order);
int weighted(weights const& w, rgb const& p);
weight_set const& weights_of(matrix m);

} // namespace quillo::conversions::reference
