#include "tests/support/conversions.h"

#include "Plugins/Plugins.AdobeCC.Transmit/format_conversion.h"
#include "lib/format_conversion/format_conversion.h"
#include "tests/support/invoke.h"
#include "tests/support/reference/reference.h"

#include <algorithm>

namespace quillo::conversions {
namespace {

namespace fc = Processing::FXlib::format_conversion;
using namespace reference;
using enum matrix;
using enum rgb_order;
using enum reach_rule;

using rows = std::vector<conversion>;
using library = void (*)(call const&);

void add_copies(rows& t)
{
    auto with_test = [&](char const* name, library f) {
        t.push_back({name, {in(4), out(4)}, last_argument::all_opaque, f, copy_with_alpha_test});
    };
    with_test("bgra::bgra", invoke<fc::bgra::bgra>);
    with_test("bgra_601::bgra_601", invoke<fc::bgra_601::bgra_601>);
    with_test("bgra_709::bgra_709", invoke<fc::bgra_709::bgra_709>);
    with_test("rgba::rgba", invoke<fc::rgba::rgba>);
    with_test("rgba_601::rgba_601", invoke<fc::rgba_601::rgba_601>);
    with_test("rgba_709::rgba_709", invoke<fc::rgba_709::rgba_709>);
    with_test("ycbcra::ycbcra", invoke<fc::ycbcra::ycbcra>);
    with_test("vuya::vuya", invoke<fc::vuya::vuya>);

    auto plain = [&](char const* name, plane_shape src, plane_shape dst, int bytes_per_pixel, library f) {
        t.push_back({name, {src, dst}, last_argument::none, f, [bytes_per_pixel](call const& c) {
                         copy_plane(c, bytes_per_pixel);
                     }});
    };
    plain("bgrx::bgrx", in(4), out(4), 4, invoke<fc::bgrx::bgrx>);
    plain("bgrx_601::bgrx_601", in(4), out(4), 4, invoke<fc::bgrx_601::bgrx_601>);
    plain("bgrx_709::bgrx_709", in(4), out(4), 4, invoke<fc::bgrx_709::bgrx_709>);
    plain("rgbx::rgbx", in(4), out(4), 4, invoke<fc::rgbx::rgbx>);
    plain("rgbx_601::rgbx_601", in(4), out(4), 4, invoke<fc::rgbx_601::rgbx_601>);
    plain("rgbx_709::rgbx_709", in(4), out(4), 4, invoke<fc::rgbx_709::rgbx_709>);
    plain("ycbcrx::ycbcrx", in(4), out(4), 4, invoke<fc::ycbcrx::ycbcrx>);
    plain("vuyx::vuyx", in(4), out(4), 4, invoke<fc::vuyx::vuyx>);
    // Four bytes a pixel are copied here too: lines are three long, but need room for four.
    plane_shape const bgr_in = in(3, four_bytes_each);
    plane_shape const bgr_out = out(3, four_bytes_each);
    plain("bgr::bgr", bgr_in, bgr_out, 4, invoke<fc::bgr::bgr>);
    plain("bgr_601::bgr_601", bgr_in, bgr_out, 4, invoke<fc::bgr_601::bgr_601>);
    plain("bgr_709::bgr_709", bgr_in, bgr_out, 4, invoke<fc::bgr_709::bgr_709>);
    plain("y::y", in(1), out(1), 1, invoke<fc::y::y>);
    plain("uyvy::uyvy", in(2), out(2), 2, invoke<fc::uyvy::uyvy>);
}

void add_ycbcr444_to_uyvy(rows& t)
{
    auto to_uyvy = [&](char const* name, library f, void (*reference)(call const&, order444), order444 order) {
        t.push_back(
            {name, {in(4, whole_last_pair), out(2, whole_last_pair)}, last_argument::none, f, [=](call const& c) {
                 reference(c, order);
             }});
    };
    to_uyvy("ycbcra::uyvy", invoke<fc::ycbcra::uyvy>, over_black_to_uyvy, order444::ycbcr);
    to_uyvy("vuya::uyvy", invoke<fc::vuya::uyvy>, over_black_to_uyvy, order444::vuy);
    to_uyvy("ycbcrx::uyvy", invoke<fc::ycbcrx::uyvy>, reorder_to_uyvy, order444::ycbcr);
    to_uyvy("vuyx::uyvy", invoke<fc::vuyx::uyvy>, reorder_to_uyvy, order444::vuy);

    auto to_uyvy_a = [&](char const* name, library f, order444 order) {
        t.push_back({name,
                     {in(4, whole_last_pair), out(2, whole_last_pair), out(1, whole_last_pair)},
                     last_argument::all_opaque,
                     f,
                     [=](call const& c) { split_to_uyvy_a(c, order); }});
    };
    to_uyvy_a("ycbcra::uyvy_a", invoke<fc::ycbcra::uyvy_a>, order444::ycbcr);
    to_uyvy_a("vuya::uyvy_a", invoke<fc::vuya::uyvy_a>, order444::vuy);
}

void add_rgb_to_uyvy(rows& t)
{
    std::vector<plane_shape> const planes{in(4, whole_pairs), out(2, whole_pairs)};
    auto premultiplied = [&](char const* name, library f, rgb_order order) {
        t.push_back(
            {name, planes, last_argument::none, f, [=](call const& c) { premultiplied_rgb_to_uyvy(c, order); }});
    };
    premultiplied("bgra::uyvy", invoke<fc::bgra::uyvy>, bgra);
    premultiplied("rgba::uyvy", invoke<fc::rgba::uyvy>, rgba);

    auto to_uyvy = [&](char const* name, library f, matrix m, rgb_order order) {
        t.push_back({name, planes, last_argument::none, f, [=](call const& c) { rgb_to_uyvy(c, m, order); }});
    };
    to_uyvy("bgrx::uyvy", invoke<fc::bgrx::uyvy>, bt709, bgra);
    to_uyvy("bgrx_601::uyvy", invoke<fc::bgrx_601::uyvy>, bt601, bgra);
    to_uyvy("bgrx_709::uyvy", invoke<fc::bgrx_709::uyvy>, bt709, bgra);
    to_uyvy("rgbx::uyvy", invoke<fc::rgbx::uyvy>, bt709, rgba);
    to_uyvy("rgbx_601::uyvy", invoke<fc::rgbx_601::uyvy>, bt601, rgba);
    to_uyvy("rgbx_709::uyvy", invoke<fc::rgbx_709::uyvy>, bt709, rgba);

    auto to_uyvy_a = [&](char const* name, library f, matrix m, rgb_order order) {
        t.push_back({name,
                     {in(4, whole_pairs), out(2, whole_pairs), out(1, whole_pairs)},
                     last_argument::all_opaque,
                     f,
                     [=](call const& c) { rgb_to_uyvy_a(c, m, order); }});
    };
    to_uyvy_a("bgra::uyvy_a", invoke<fc::bgra::uyvy_a>, bt709, bgra);
    to_uyvy_a("bgra_601::uyvy_a", invoke<fc::bgra_601::uyvy_a>, bt601, bgra);
    to_uyvy_a("bgra_709::uyvy_a", invoke<fc::bgra_709::uyvy_a>, bt709, bgra);
    to_uyvy_a("rgba::uyvy_a", invoke<fc::rgba::uyvy_a>, bt709, rgba);
    to_uyvy_a("rgba_601::uyvy_a", invoke<fc::rgba_601::uyvy_a>, bt601, rgba);
    to_uyvy_a("rgba_709::uyvy_a", invoke<fc::rgba_709::uyvy_a>, bt709, rgba);

    void (*const from_bgr)(call const&) = bgr_to_uyvy;
    t.push_back({"bgr::uyvy",
                 {in(3, whole_last_pair), out(2, whole_last_pair)},
                 last_argument::none,
                 invoke<fc::bgr::uyvy>,
                 from_bgr});
}

void add_rgb_to_ycbcr444(rows& t)
{
    using enum ycbcr_order;
    using enum fourth_byte;
    auto add = [&](char const* name, library f, matrix m, rgb_order order, ycbcr_order target, fourth_byte fourth) {
        t.push_back({name, {in(4), out(4)}, last_argument::none, f, [=](call const& c) {
                         rgb_to_ycbcr444(c, m, order, target, fourth);
                     }});
        t.back().sources_aligned = t.back().outputs_aligned = true;
    };
    add("bgra::ycbcra", invoke<fc::bgra::ycbcra>, bt709, bgra, ycbcr, alpha);
    add("bgra_601::ycbcra", invoke<fc::bgra_601::ycbcra>, bt601, bgra, ycbcr, alpha);
    add("bgra_709::ycbcra", invoke<fc::bgra_709::ycbcra>, bt709, bgra, ycbcr, alpha);
    add("rgba::ycbcra", invoke<fc::rgba::ycbcra>, bt709, rgba, ycbcr, alpha);
    add("rgba_601::ycbcra", invoke<fc::rgba_601::ycbcra>, bt601, rgba, ycbcr, alpha);
    add("rgba_709::ycbcra", invoke<fc::rgba_709::ycbcra>, bt709, rgba, ycbcr, alpha);
    add("bgra::crcbya", invoke<fc::bgra::crcbya>, bt709, bgra, crcby, alpha);
    add("bgra_601::crcbya", invoke<fc::bgra_601::crcbya>, bt601, bgra, crcby, alpha);
    add("bgra_709::crcbya", invoke<fc::bgra_709::crcbya>, bt709, bgra, crcby, alpha);
    add("rgba::crcbya", invoke<fc::rgba::crcbya>, bt709, rgba, crcby, alpha);
    add("rgba_601::crcbya", invoke<fc::rgba_601::crcbya>, bt601, rgba, crcby, alpha);
    add("rgba_709::crcbya", invoke<fc::rgba_709::crcbya>, bt709, rgba, crcby, alpha);
    add("bgrx::ycbcrx", invoke<fc::bgrx::ycbcrx>, bt709, bgra, ycbcr, filler);
    add("bgrx_601::ycbcrx", invoke<fc::bgrx_601::ycbcrx>, bt601, bgra, ycbcr, filler);
    add("bgrx_709::ycbcrx", invoke<fc::bgrx_709::ycbcrx>, bt709, bgra, ycbcr, filler);
    add("rgbx::ycbcrx", invoke<fc::rgbx::ycbcrx>, bt709, rgba, ycbcr, filler);
    add("rgbx_601::ycbcrx", invoke<fc::rgbx_601::ycbcrx>, bt601, rgba, ycbcr, filler);
    add("rgbx_709::ycbcrx", invoke<fc::rgbx_709::ycbcrx>, bt709, rgba, ycbcr, filler);
    add("bgrx::crcbyx", invoke<fc::bgrx::crcbyx>, bt709, bgra, crcby, filler);
    add("bgrx_601::crcbyx", invoke<fc::bgrx_601::crcbyx>, bt601, bgra, crcby, filler);
    add("bgrx_709::crcbyx", invoke<fc::bgrx_709::crcbyx>, bt709, bgra, crcby, filler);
    add("rgbx::crcbyx", invoke<fc::rgbx::crcbyx>, bt709, rgba, crcby, filler);
    add("rgbx_601::crcbyx", invoke<fc::rgbx_601::crcbyx>, bt601, rgba, crcby, filler);
    add("rgbx_709::crcbyx", invoke<fc::rgbx_709::crcbyx>, bt709, rgba, crcby, filler);
}

// With a matrix argument 601 alone chooses BT.601, in r_g_b 709 alone chooses BT.709.
matrix only_601(call const& c) { return c.option == 601 ? bt601 : bt709; }

matrix only_709(call const& c) { return c.option == 709 ? bt709 : bt601; }

void add_uyvy_to_rgb(rows& t)
{
    using last_argument::color_space;
    using last_argument::none;
    auto always_601 = [](call const&) { return bt601; };
    auto always_709 = [](call const&) { return bt709; };

    auto to_rgba = [&](char const* name, library f, auto chosen, rgb_order order, last_argument last = none) {
        t.push_back(
            {name, {in(2), out(4, whole_pairs)}, last, f, [=](call const& c) { uyvy_to_rgba(c, chosen(c), order); }});
    };
    to_rgba("uyvy::bgra", invoke<fc::uyvy::bgra>, only_601, bgra, color_space);
    to_rgba("uyvy::bgra_601", invoke<fc::uyvy::bgra_601>, always_601, bgra);
    to_rgba("uyvy::bgra_709", invoke<fc::uyvy::bgra_709>, always_709, bgra);
    to_rgba("uyvy::rgba", invoke<fc::uyvy::rgba>, only_601, rgba, color_space);
    to_rgba("uyvy::rgba_601", invoke<fc::uyvy::rgba_601>, always_601, rgba);
    to_rgba("uyvy::rgba_709", invoke<fc::uyvy::rgba_709>, always_709, rgba);
    to_rgba("uyvy::bgrx", invoke<fc::uyvy::bgrx>, only_601, bgra, color_space);
    to_rgba("uyvy::bgrx_601", invoke<fc::uyvy::bgrx_601>, always_601, bgra);
    to_rgba("uyvy::bgrx_709", invoke<fc::uyvy::bgrx_709>, always_709, bgra);
    to_rgba("uyvy::rgbx", invoke<fc::uyvy::rgbx>, only_601, rgba, color_space);
    to_rgba("uyvy::rgbx_601", invoke<fc::uyvy::rgbx_601>, always_601, rgba);
    to_rgba("uyvy::rgbx_709", invoke<fc::uyvy::rgbx_709>, always_709, rgba);

    auto with_alpha = [&](char const* name, library f, auto chosen, rgb_order order, last_argument last = none) {
        t.push_back({name, {in(2), in(1), out(4, whole_pairs)}, last, f, [=](call const& c) {
                         uyvy_a_to_rgba(c, chosen(c), order);
                     }});
    };
    with_alpha("uyvy_a::bgra", invoke<fc::uyvy_a::bgra>, only_601, bgra, color_space);
    with_alpha("uyvy_a::bgra_601", invoke<fc::uyvy_a::bgra_601>, always_601, bgra);
    with_alpha("uyvy_a::bgra_709", invoke<fc::uyvy_a::bgra_709>, always_709, bgra);
    with_alpha("uyvy_a::rgba", invoke<fc::uyvy_a::rgba>, only_601, rgba, color_space);
    with_alpha("uyvy_a::rgba_601", invoke<fc::uyvy_a::rgba_601>, always_601, rgba);
    with_alpha("uyvy_a::rgba_709", invoke<fc::uyvy_a::rgba_709>, always_709, rgba);

    auto to_bgr = [&](char const* name, library f, auto chosen, last_argument last = none) {
        t.push_back(
            {name, {in(2, whole_last_pair), joining_at(out(3, whole_last_pair), 4)}, last, f, [=](call const& c) {
                 uyvy_to_bgr(c, chosen(c));
             }});
    };
    to_bgr("uyvy::bgr", invoke<fc::uyvy::bgr>, only_601, color_space);
    to_bgr("uyvy::bgr_601", invoke<fc::uyvy::bgr_601>, always_601);
    to_bgr("uyvy::bgr_709", invoke<fc::uyvy::bgr_709>, always_709);

    auto to_r_g_b = [&](char const* name, library f, auto chosen, last_argument last = none) {
        t.push_back(
            {name, {in(2), out(1, whole_pairs), out(1, whole_pairs), out(1, whole_pairs)}, last, f, [=](call const& c) {
                 uyvy_to_r_g_b(c, chosen(c));
             }});
        t.back().outputs_share_stride = true;
    };
    to_r_g_b("uyvy::r_g_b", invoke<fc::uyvy::r_g_b>, only_709, color_space);
    to_r_g_b("uyvy::r_g_b_601", invoke<fc::uyvy::r_g_b_601>, always_601);
    to_r_g_b("uyvy::r_g_b_709", invoke<fc::uyvy::r_g_b_709>, always_709);
}

void add_repacking(rows& t)
{
    using whole_picture = void (*)(call const&);
    auto add = [&](char const* name, std::vector<plane_shape> planes, library f, whole_picture reference,
                   last_argument last = last_argument::none) {
        t.push_back({name, std::move(planes), last, f, reference});
    };
    auto half_lines = [](plane_shape shape) { return with_lines(shape, line_rule::half_rounded_down); };
    auto even_lines = [](plane_shape shape) { return with_lines(shape, line_rule::half_rounded_up); };
    auto doubled = [](plane_shape shape) { return with_lines(shape, line_rule::even_half_rounded_down); };
    plane_shape const uyvy = in(2, whole_last_pair);

    add("y_uv::y_uv", {in(1), half_lines(in(1, whole_pairs)), out(1), half_lines(out(1, whole_pairs))},
        invoke<fc::y_uv::y_uv>, y_uv_copy);
    add("y_uv::y_uv_to422", {in(1), half_lines(in(1)), out(1), doubled(out(1))}, invoke<fc::y_uv::y_uv_to422>,
        y_uv_to422);
    add("y_u_v::y_uv",
        {in(1), half_lines(in(1, half)), half_lines(in(1, half)), out(1), half_lines(out(1, whole_pairs))},
        invoke<fc::y_u_v::y_uv>, y_u_v_to_y_uv);
    add("y_u_v::y_uv_to422",
        {in(1), half_lines(in(1, half)), half_lines(in(1, half)), out(1), doubled(out(1, whole_pairs))},
        invoke<fc::y_u_v::y_uv_to422>, y_u_v_to_y_uv_to422);
    add("uyvy::yuy2", {in(2), out(2)}, invoke<fc::uyvy::yuy2>, swap_bytes);
    add("yuy2::uyvy", {in(2), out(2)}, invoke<fc::yuy2::uyvy>, swap_bytes);
    add("uyvy::y_uv_422", {uyvy, out(1), out(1)}, invoke<fc::uyvy::y_uv_422>, split_y_uv_422);
    add("uyvy::y_uv_420", {uyvy, out(1), even_lines(out(1))}, invoke<fc::uyvy::y_uv_420>, split_y_uv_420);
    add("uyvy::y_u_v_422", {uyvy, out(1), out(1, half), out(1, half)}, invoke<fc::uyvy::y_u_v_422>, split_y_u_v_422);
    add("uyvy::y_u_v_420", {uyvy, out(1), even_lines(out(1, half)), even_lines(out(1, half))},
        invoke<fc::uyvy::y_u_v_420>, split_y_u_v_420);
    add("uyvy::y", {uyvy, out(1)}, invoke<fc::uyvy::y>, luma, last_argument::expand);
    add("y::uyvy", {in(1), out(2)}, invoke<fc::y::uyvy>, luma_to_uyvy, last_argument::compress);
    add("uyvy::ycbcrx", {uyvy, out(4)}, invoke<fc::uyvy::ycbcrx>, uyvy_to_ycbcrx);
    add("uyvy::ya_uv", {uyvy, uyvy, out(2), out(1)}, invoke<fc::uyvy::ya_uv>, key_to_ya_uv, last_argument::expand);
    add("uyvy_a::ya_uv", {uyvy, in(1), out(2), out(1)}, invoke<fc::uyvy_a::ya_uv>, alpha_to_ya_uv);
    add("uyvy_a::uyvy", {uyvy, in(1, whole_last_pair), out(2, whole_last_pair)}, invoke<fc::uyvy_a::uyvy>,
        composite_over_black);
    add("uyvy_a::ycbcra", {uyvy, in(1), out(4)}, invoke<fc::uyvy_a::ycbcra>, uyvy_a_to_ycbcra);
    add("uyvy_a::crcbya", {uyvy, in(1), out(4)}, invoke<fc::uyvy_a::crcbya>, uyvy_a_to_crcbya);
}

void add_deep_and_special(rows& t)
{
    using last_argument::none;
    plane_shape const words = of_16_bit_samples(in(2));
    t.push_back({"black::uyvy", {out(2, doubled_tail)}, none, invoke<fc::black::uyvy>, black_uyvy});
    t.push_back({"black::alpha", {out(1)}, last_argument::value, invoke<fc::black::alpha>, black_alpha});
    t.push_back({"v210::uyvy", {in(0, v210_groups), out(2, v210_pixels)}, none, invoke<fc::v210::uyvy>, v210_to_uyvy});
    t.push_back({"p216::uyvy", {words, joining_at(words, 4), out(2)}, none, invoke<fc::p216::uyvy>, p216_to_uyvy});
    t.push_back({"alpha_u16::alpha", {words, out(1)}, none, invoke<fc::alpha_u16::alpha>, alpha_u16_to_alpha});
    t.push_back({"L::bgra", {in(1), out(4)}, none, invoke<fc::L::bgra>, grey_to_bgra});
}

void add_plugin_converters(rows& t)
{
    std::vector<plane_shape> const planes{in(4, whole_last_pair), out(2, whole_last_pair), out(1, whole_last_pair)};
    void (*const over)(call const&) = composite;
    t.push_back({"convert_BGRA_to_UYVY_A", planes, last_argument::none, invoke<::convert_BGRA_to_UYVY_A>,
                 bgra_to_uyvy_a, true, false});
    t.push_back({"convert_YUYA_to_UYVY_A", planes, last_argument::none, invoke<::convert_YUYA_to_UYVY_A>,
                 yuya_to_uyvy_a, true, false});
    t.push_back({"composite", {in(2), in(1), out(2)}, last_argument::none, invoke<::composite>, over, false, false});
}

} // namespace

std::string_view conversion::source() const { return name.substr(0, name.find("::")); }

std::string_view conversion::target() const
{
    std::size_t const separator = name.find("::");
    return separator == name.npos ? std::string_view{} : name.substr(separator + 2);
}

std::vector<conversion> gathered(std::initializer_list<void (*)(std::vector<conversion>&)> families)
{
    rows table;
    for (auto const& add : families)
        add(table);
    return table;
}

std::vector<conversion> const& all()
{
    static rows const table = gathered({add_copies, add_ycbcr444_to_uyvy, add_rgb_to_uyvy, add_rgb_to_ycbcr444,
                                        add_uyvy_to_rgb, add_repacking, add_deep_and_special, add_plugin_converters});
    return table;
}

conversion const* find(std::string_view name)
{
    auto const found = std::ranges::find(all(), name, &conversion::name);
    return found == all().end() ? nullptr : &*found;
}

bool is_joined(conversion const& row, call const& c)
{
    bool tight = row.joins_lines;
    for (std::size_t i = 0; i < row.planes.size(); ++i) {
        // Half as many chroma lines: no run could be common to all planes.
        if (row.planes[i].line_count != line_rule::every)
            return false;
        tight = tight && c.planes[i].stride == row.planes[i].joins_at(c.width);
    }
    return tight || (row.joins_lines && c.height == 1);
}

} // namespace quillo::conversions
