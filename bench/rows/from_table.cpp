// The conversions that have no row of their own, since another one runs the same kernel: against the limits only.
#include "bench/rows/rows.h"
#include "tests/support/conversions.h"

#include <algorithm>

namespace bench {

namespace {

plane_shape shape_of(quillo::conversions::plane_shape const& shape)
{
    using quillo::conversions::reach_rule;
    int const bytes = shape.rule == reach_rule::four_bytes_each ? 48 : shape.length(12);
    return {bytes, shape.lines(12) == 12 ? 1 : 2};
}

candidate ours(quillo::conversions::conversion const& of)
{
    return {"quillo", job::ours, [&of](frame const& f) {
                bool opaque = false;
                quillo::conversions::call c{.width = f.width, .height = f.height, .option = 709, .all_opaque = &opaque};
                std::size_t in = 0, out = 0;
                for (std::size_t i = 0; i < of.planes.size(); ++i)
                    if (of.planes[i].written) {
                        c.planes[i] = {f.out[out], f.out_stride[out]};
                        ++out;
                    } else {
                        // A call does not tell sources from targets.
                        c.planes[i] = {const_cast<unsigned char*>(f.in[in]), f.in_stride[in]};
                        ++in;
                    }
                of.library(c);
            }};
}

} // namespace

void add_rest_of_table(std::vector<row>& rows)
{
    for (auto const& conversion : quillo::conversions::all()) {
        auto const measured = [&](row const& r) { return r.name.substr(0, r.name.find('/')) == conversion.name; };
        if (std::any_of(rows.begin(), rows.end(), measured))
            continue;
        row rest{std::string{conversion.name}, {}, {}, {ours(conversion)}, true};
        for (auto const& plane : conversion.planes)
            (plane.written ? rest.out : rest.in).push_back(shape_of(plane));
        rows.push_back(std::move(rest));
    }
}

} // namespace bench
