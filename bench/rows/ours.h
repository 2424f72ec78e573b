// Our own side of a row, and what peers are put together with.
#pragma once

#include "bench/row.h"

#include <tuple>
#include <utility>
#include <vector>

namespace bench {

// convert(each source plane and stride..., each target plane and stride..., width, height, more...).
template <std::size_t sources, std::size_t targets, class Convert, class... More>
candidate ours(Convert convert, More... more)
{
    return {"quillo", job::ours, [=](frame const& f) {
                auto const in = [&]<std::size_t... n>(std::index_sequence<n...>)
                {
                    return std::tuple_cat(std::tuple{f.in[n], f.in_stride[n]}...);
                };
                auto const out = [&]<std::size_t... n>(std::index_sequence<n...>)
                {
                    return std::tuple_cat(std::tuple{f.out[n], f.out_stride[n]}...);
                };
                std::apply(convert, std::tuple_cat(in(std::make_index_sequence<sources>{}),
                                                   out(std::make_index_sequence<targets>{}),
                                                   std::tuple{f.width, f.height, more...}));
            }};
}

// To UYVY and a plane of alphas, with or without the test.
template <auto convert>
candidate split_alpha(bool tested)
{
    return {"quillo", job::ours, [=](frame const& f) {
                bool opaque = false;
                convert(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.out[1], f.out_stride[1], f.width,
                        f.height, tested ? &opaque : nullptr);
            }};
}

// Line n of a plane.
inline unsigned char const* source_line(frame const& f, int plane, int n)
{
    return f.in[plane] + static_cast<std::ptrdiff_t>(n) * f.in_stride[plane];
}
inline unsigned char* target_line(frame const& f, int plane, int n)
{
    return f.out[plane] + static_cast<std::ptrdiff_t>(n) * f.out_stride[plane];
}

// A line that a peer of several passes keeps in between; it stays in the fastest cache.
inline unsigned char* spare_line(int n)
{
    static thread_local std::vector<unsigned char> lines(8 * 16384, 128);
    return lines.data() + static_cast<std::ptrdiff_t>(n) * 16384;
}

} // namespace bench
