#include "tests/support/kernels.h"

#include "lib/format_conversion/line.h"
#include "tests/support/invoke.h"
#include "tests/support/reference/reference.h"

#include <deque>
#include <string>
#include <utility>

namespace quillo::conversions {
namespace {

namespace line = Processing::FXlib::format_conversion::line;
using namespace reference;
using enum matrix;
using enum reach_rule;

using rows = std::vector<conversion>;
using planes = std::vector<plane_shape>;
// Made outside the lambdas that are templates: a type of its own for each row takes GCC minutes to tell apart.
using reference_call = std::function<void(call const&)>;

void add_row(rows& t, std::string_view name, conversion row, std::size_t bits, std::size_t flags)
{
    static std::deque<std::string> names; // rows only look at theirs
    std::string& full = names.emplace_back(name);
    full += '<';
    for (std::size_t flag = 0; flag < flags; ++flag)
        full += bits >> flag & 1 ? '1' : '0';
    full += '>';
    row.name = full;
    row.sources_aligned = bits & 1;
    row.outputs_aligned = bits & 2;
    t.push_back(std::move(row));
}

// Adds make<flags...>() for every value of the flags, the first two being source and destination alignment.
template <class Make, std::size_t bits, std::size_t... flag>
void add_one(rows& t, std::string_view name, Make make, std::index_sequence<flag...>)
{
    add_row(t, name, make.template operator()<(bits >> flag & 1)...>(), bits, sizeof...(flag));
}

template <int flags, class Make>
void add(rows& t, std::string_view name, Make make)
{
    [&]<std::size_t... bits>(std::index_sequence<bits...>)
    {
        (add_one<Make, bits>(t, name, make, std::make_index_sequence<flags>{}), ...);
    }
    (std::make_index_sequence<1u << flags>{});
}

conversion row(planes shapes, void (*kernel)(call const&), reference_call reference, bool returns_opaque = false)
{
    conversion result{{}, std::move(shapes), last_argument::none, kernel, std::move(reference)};
    result.returns_opaque = returns_opaque;
    return result;
}

void store_result(call const& c, bool opaque)
{
    if (c.all_opaque)
        *c.all_opaque = opaque;
}

void add_copies(rows& t)
{
    reference_call const y = [](call const& c) { copy_bytes(c.planes[0].data, c.planes[1].data, c.width); };
    reference_call const bgra = [](call const& c) {
        store_result(c, copy_pixels(c.planes[0].data, c.planes[1].data, c.width));
    };
    add<2>(
        t, "line::y::y", [&]<bool... f>() {
            return row({in(1), out(1)}, invoke_kernel<line::y::y<f...>>, y);
        });
    add<3>(t, "line::bgra::bgra", [&]<bool src, bool dst, bool test>() {
        return row({in(4), out(4)}, invoke_kernel<line::bgra::bgra<src, dst, test>>, bgra, test);
    });
}

void add_ycbcr444_to_uyvy(rows& t)
{
    static planes const to_uyvy{in(4, whole_last_pair), out(2, whole_last_pair)};
    static planes const to_uyvy_a{in(4, whole_last_pair), out(2, whole_last_pair), out(1, whole_last_pair)};
    auto over_black = [](order444 order) -> reference_call {
        return [order](call const& c) { over_black_to_uyvy(c.planes[0].data, c.planes[1].data, c.width, order); };
    };
    auto reorder = [](order444 order) -> reference_call {
        return [order](call const& c) { reorder_to_uyvy(c.planes[0].data, c.planes[1].data, c.width, order); };
    };
    auto split = [](order444 order) -> reference_call {
        return [order](call const& c) {
            store_result(c, split_to_uyvy_a(c.planes[0].data, c.planes[1].data, c.planes[2].data, c.width, order));
        };
    };
    add<2>(
        t, "line::ycbcra::uyvy", [&]<bool... f>() {
            return row(to_uyvy, invoke_kernel<line::ycbcra::uyvy<f...>>, over_black(order444::ycbcr));
        });
    add<2>(
        t, "line::vuya::uyvy", [&]<bool... f>() {
            return row(to_uyvy, invoke_kernel<line::vuya::uyvy<f...>>, over_black(order444::vuy));
        });
    add<2>(
        t, "line::ycbcrx::uyvy", [&]<bool... f>() {
            return row(to_uyvy, invoke_kernel<line::ycbcrx::uyvy<f...>>, reorder(order444::ycbcr));
        });
    add<2>(
        t, "line::vuyx::uyvy", [&]<bool... f>() {
            return row(to_uyvy, invoke_kernel<line::vuyx::uyvy<f...>>, reorder(order444::vuy));
        });
    add<3>(t, "line::ycbcra::uyvy_a", [&]<bool src, bool dst, bool test>() {
        return row(to_uyvy_a, invoke_kernel<line::ycbcra::uyvy_a<src, dst, test>>, split(order444::ycbcr), test);
    });
    add<3>(t, "line::vuya::uyvy_a", [&]<bool src, bool dst, bool test>() {
        return row(to_uyvy_a, invoke_kernel<line::vuya::uyvy_a<src, dst, test>>, split(order444::vuy), test);
    });
}

rgb_order order_of(bool rgba) { return rgba ? rgb_order::rgba : rgb_order::bgra; }

matrix matrix_of(bool is_709) { return is_709 ? bt709 : bt601; }

reference_call rgb_to_uyvy_reference(bool premultiply, bool is_709, bool rgba)
{
    return [=](call const& c) {
        if (premultiply)
            premultiplied_rgb_to_uyvy(c.planes[0].data, c.planes[1].data, c.width, order_of(rgba));
        else
            rgb_to_uyvy(c.planes[0].data, c.planes[1].data, c.width, matrix_of(is_709), order_of(rgba));
    };
}

template <bool premultiply, bool is_709>
void add_rgb_to_uyvy_with(rows& t, std::string_view name)
{
    add<3>(t, name, []<bool src, bool dst, bool rgba>() {
        return row({in(4, whole_pairs), out(2, whole_pairs)},
                   invoke_kernel<line::rgba_and_bgra::uyvy<src, dst, premultiply, is_709, rgba>>,
                   rgb_to_uyvy_reference(premultiply, is_709, rgba));
    });
}

void add_rgb_to_uyvy(rows& t)
{
    add_rgb_to_uyvy_with<true, true>(t, "line::rgba_and_bgra::uyvy premultiply 709 ");
    add_rgb_to_uyvy_with<false, true>(t, "line::rgba_and_bgra::uyvy 709 ");
    add_rgb_to_uyvy_with<false, false>(t, "line::rgba_and_bgra::uyvy 601 ");
    auto to_uyvy_a = [](bool is_709, bool rgba) -> reference_call {
        return [=](call const& c) {
            store_result(c, rgb_to_uyvy_a(c.planes[0].data, c.planes[1].data, c.planes[2].data, c.width,
                                          matrix_of(is_709), order_of(rgba)));
        };
    };
    reference_call const bgr = [](call const& c) { bgr_to_uyvy(c.planes[0].data, c.planes[1].data, c.width); };
    add<5>(t, "line::rgba_and_bgra::uyvy_a", [&]<bool src, bool dst, bool is_709, bool test, bool rgba>() {
        return row({in(4, whole_pairs), out(2, whole_pairs), out(1, whole_pairs)},
                   invoke_kernel<line::rgba_and_bgra::uyvy_a<src, dst, is_709, test, rgba>>, to_uyvy_a(is_709, rgba),
                   test);
    });
    add<2>(t, "line::bgr::uyvy 709 ", [&]<bool src, bool dst>() {
        return row({in(3, whole_last_pair), out(2, whole_last_pair)}, invoke_kernel<line::bgr::uyvy<src, dst, true>>,
                   bgr);
    });
}

void add_rgb_to_ycbcr444(rows& t)
{
    auto reference = [](bool is_709, bool rgba, bool crcby, fourth_byte fourth) -> reference_call {
        return [=](call const& c) {
            rgb_to_ycbcr444(c.planes[0].data, c.planes[1].data, c.width, matrix_of(is_709), order_of(rgba),
                            crcby ? ycbcr_order::crcby : ycbcr_order::ycbcr, fourth);
        };
    };
    add<5>(t, "line::rgba_and_bgra::ycbcra", [&]<bool src, bool dst, bool is_709, bool rgba, bool crcby>() {
        return row({in(4), out(4)}, invoke_kernel<line::rgba_and_bgra::ycbcra<src, dst, is_709, rgba, crcby>>,
                   reference(is_709, rgba, crcby, fourth_byte::alpha));
    });
    add<5>(t, "line::rgba_and_bgra::ycbcrx", [&]<bool src, bool dst, bool is_709, bool rgba, bool crcby>() {
        return row({in(4), out(4)}, invoke_kernel<line::rgba_and_bgra::ycbcrx<src, dst, is_709, rgba, crcby>>,
                   reference(is_709, rgba, crcby, fourth_byte::filler));
    });
}

void add_uyvy_to_rgb(rows& t)
{
    static planes const to_rgba{in(2), out(4, whole_pairs)};
    static planes const a_to_rgba{in(2), in(1), out(4, whole_pairs)};
    static planes const to_bgr{in(2, whole_last_pair), out(3, whole_last_pair)};
    static planes const to_planes{in(2), out(1, whole_pairs), out(1, whole_pairs), out(1, whole_pairs)};
    auto rgba_reference = [](bool is_709, bool rgba) -> reference_call {
        return [=](call const& c) {
            uyvy_to_rgba(c.planes[0].data, nullptr, c.planes[1].data, c.width, matrix_of(is_709), order_of(rgba));
        };
    };
    auto a_reference = [](bool is_709, bool rgba) -> reference_call {
        return [=](call const& c) {
            uyvy_to_rgba(c.planes[0].data, c.planes[1].data, c.planes[2].data, c.width, matrix_of(is_709),
                         order_of(rgba));
        };
    };
    auto bgr_reference = [](bool is_709) -> reference_call {
        return [=](call const& c) { uyvy_to_bgr(c.planes[0].data, c.planes[1].data, c.width, matrix_of(is_709)); };
    };
    auto planes_reference = [](bool is_709) -> reference_call {
        return [=](call const& c) {
            uyvy_to_r_g_b(c.planes[0].data, c.planes[1].data, c.planes[2].data, c.planes[3].data, c.width,
                          matrix_of(is_709));
        };
    };
    add<4>(t, "line::uyvy::rgba_and_bgra", [&]<bool src, bool dst, bool is_709, bool rgba>() {
        return row(to_rgba, invoke_kernel<line::uyvy::rgba_and_bgra<src, dst, is_709, rgba>>,
                   rgba_reference(is_709, rgba));
    });
    add<4>(t, "line::uyvy_a::rgba_and_bgra", [&]<bool src, bool dst, bool is_709, bool rgba>() {
        return row(a_to_rgba, invoke_kernel<line::uyvy_a::rgba_and_bgra<src, dst, is_709, rgba>>,
                   a_reference(is_709, rgba));
    });
    add<3>(t, "line::uyvy::bgr", [&]<bool src, bool dst, bool is_709>() {
        return row(to_bgr, invoke_kernel<line::uyvy::bgr<src, dst, is_709>>, bgr_reference(is_709));
    });
    add<3>(t, "line::uyvy::r_g_b", [&]<bool src, bool dst, bool is_709>() {
        return row(to_planes, invoke_kernel<line::uyvy::r_g_b<src, dst, is_709>>, planes_reference(is_709));
    });

    add<2>(
        t, "line::uyvy::bgra_601", [&]<bool... f>() {
            return row(to_rgba, invoke_kernel<line::uyvy::bgra_601<f...>>, rgba_reference(false, false));
        });
    add<2>(
        t, "line::uyvy::bgra_709", [&]<bool... f>() {
            return row(to_rgba, invoke_kernel<line::uyvy::bgra_709<f...>>, rgba_reference(true, false));
        });
    add<2>(
        t, "line::uyvy::rgba_601", [&]<bool... f>() {
            return row(to_rgba, invoke_kernel<line::uyvy::rgba_601<f...>>, rgba_reference(false, true));
        });
    add<2>(
        t, "line::uyvy::rgba_709", [&]<bool... f>() {
            return row(to_rgba, invoke_kernel<line::uyvy::rgba_709<f...>>, rgba_reference(true, true));
        });
    add<2>(
        t, "line::uyvy_a::bgra_601", [&]<bool... f>() {
            return row(a_to_rgba, invoke_kernel<line::uyvy_a::bgra_601<f...>>, a_reference(false, false));
        });
    add<2>(
        t, "line::uyvy_a::bgra_709", [&]<bool... f>() {
            return row(a_to_rgba, invoke_kernel<line::uyvy_a::bgra_709<f...>>, a_reference(true, false));
        });
    add<2>(
        t, "line::uyvy_a::rgba_601", [&]<bool... f>() {
            return row(a_to_rgba, invoke_kernel<line::uyvy_a::rgba_601<f...>>, a_reference(false, true));
        });
    add<2>(
        t, "line::uyvy_a::rgba_709", [&]<bool... f>() {
            return row(a_to_rgba, invoke_kernel<line::uyvy_a::rgba_709<f...>>, a_reference(true, true));
        });
    add<2>(
        t, "line::uyvy::bgr_601", [&]<bool... f>() {
            return row(to_bgr, invoke_kernel<line::uyvy::bgr_601<f...>>, bgr_reference(false));
        });
    add<2>(
        t, "line::uyvy::bgr_709", [&]<bool... f>() {
            return row(to_bgr, invoke_kernel<line::uyvy::bgr_709<f...>>, bgr_reference(true));
        });
    add<2>(
        t, "line::uyvy::r_g_b_601", [&]<bool... f>() {
            return row(to_planes, invoke_kernel<line::uyvy::r_g_b_601<f...>>, planes_reference(false));
        });
    add<2>(
        t, "line::uyvy::r_g_b_709", [&]<bool... f>() {
            return row(to_planes, invoke_kernel<line::uyvy::r_g_b_709<f...>>, planes_reference(true));
        });
}

void add_repacking(rows& t)
{
    reference_call const over_black = [](call const& c) {
        composite_over_black(c.planes[0].data, c.planes[1].data, c.planes[2].data, c.width);
    };
    reference_call const crcbya = [](call const& c) {
        uyvy_a_to_crcbya(c.planes[0].data, c.planes[1].data, c.planes[2].data, c.width);
    };
    add<2>(
        t, "line::uyvy_a::uyvy", [&]<bool... f>() {
            return row({in(2, whole_last_pair), in(1, whole_last_pair), out(2, whole_last_pair)},
                       invoke_kernel<line::uyvy_a::uyvy<f...>>, over_black);
        });
    add<2>(
        t, "line::uyvy_a::crcbya", [&]<bool... f>() {
            return row({in(2, whole_last_pair), in(1), out(4)}, invoke_kernel<line::uyvy_a::crcbya<f...>>, crcbya);
        });
}

} // namespace

std::vector<conversion> const& all_kernels()
{
    static rows const table = gathered(
        {add_copies, add_ycbcr444_to_uyvy, add_rgb_to_uyvy, add_rgb_to_ycbcr444, add_uyvy_to_rgb, add_repacking});
    return table;
}

} // namespace quillo::conversions
