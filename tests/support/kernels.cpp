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
using enum reach_rule;

using rows = std::vector<conversion>;
using planes = std::vector<plane_shape>;

// Adds make<flags...>() for every value of the flags, the first two being source and destination alignment.
template <class Make, std::size_t bits, std::size_t... flag>
void add_one(rows& t, std::string_view name, Make make, std::index_sequence<flag...>)
{
    static std::deque<std::string> names; // rows only look at theirs
    std::string& full = names.emplace_back(name);
    full += '<';
    ((full += (bits >> flag & 1) ? '1' : '0'), ...);
    full += '>';
    conversion row = make.template operator()<(bits >> flag & 1)...>();
    row.name = full;
    row.sources_aligned = bits & 1;
    row.outputs_aligned = bits & 2;
    t.push_back(std::move(row));
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

conversion row(planes shapes, void (*kernel)(call const&), std::function<void(call const&)> reference,
               bool returns_opaque = false)
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
    add<2>(
        t, "line::y::y", []<bool... f>() {
            return row({in(1), out(1)}, invoke_kernel<line::y::y<f...>>,
                       [](call const& c) { copy_bytes(c.planes[0].data, c.planes[1].data, c.width); });
        });
    add<3>(t, "line::bgra::bgra", []<bool src, bool dst, bool test>() {
        return row(
            {in(4), out(4)}, invoke_kernel<line::bgra::bgra<src, dst, test>>,
            [](call const& c) { store_result(c, copy_pixels(c.planes[0].data, c.planes[1].data, c.width)); }, test);
    });
}

void add_ycbcr444_to_uyvy(rows& t)
{
    static planes const to_uyvy{in(4, whole_last_pair), out(2, whole_last_pair)};
    static planes const to_uyvy_a{in(4, whole_last_pair), out(2, whole_last_pair), out(1, whole_last_pair)};
    auto over_black = [](order444 order) {
        return [order](call const& c) { over_black_to_uyvy(c.planes[0].data, c.planes[1].data, c.width, order); };
    };
    auto reorder = [](order444 order) {
        return [order](call const& c) { reorder_to_uyvy(c.planes[0].data, c.planes[1].data, c.width, order); };
    };
    auto split = [](order444 order) {
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

} // namespace

std::vector<conversion> const& all_kernels()
{
    static rows const table = [] {
        rows t;
        add_copies(t);
        add_ycbcr444_to_uyvy(t);
        return t;
    }();
    return table;
}

} // namespace quillo::conversions
