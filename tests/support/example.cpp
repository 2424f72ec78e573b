#include "tests/support/example.h"

#include "lib/format_conversion/detail/processor.h"
#include "tests/support/arena.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace quillo::conversions {
namespace {

namespace processors = Processing::FXlib::format_conversion::detail;

std::size_t room_for(conversion const& row, call const& c, std::size_t plane)
{
    plane_shape const& shape = row.planes[plane];
    int const lines = shape.lines(c.height);
    if (is_joined(row, c) || lines < 2)
        return static_cast<std::size_t>(shape.reach(lines < 1 ? 0 : c.width * std::max(lines, 1)));
    return static_cast<std::size_t>(c.planes[plane].stride * (lines - 1) + shape.reach(c.width));
}

// Sources end at an unreadable page; with one line of some conversions they must be aligned instead.
unsigned char* place(arena const& in, std::size_t size, bool aligned)
{
    unsigned char* const data = in.end() - size;
    return aligned ? data - reinterpret_cast<std::uintptr_t>(data) % 16 : data;
}

outcome convert_with(example const& e, void (*library)(call const&))
{
    conversion const& row = *find(e.name);
    call c{.width = e.width, .height = e.height, .option = e.option};
    outcome result;
    std::vector<std::unique_ptr<arena>> memory;
    std::size_t sources = 0;
    for (std::size_t i = 0; i < row.planes.size(); ++i)
        c.planes[i].stride = e.strides.empty() ? row.planes[i].length(e.width) : e.strides[i];
    for (std::size_t i = 0; i < row.planes.size(); ++i) {
        std::size_t const touched = room_for(row, c, i);
        if (row.planes[i].written) {
            memory.push_back(std::make_unique<arena>(touched + 64));
            c.planes[i].data = memory.back()->begin();
            std::memset(c.planes[i].data, untouched, touched + 8);
            std::copy(e.background.begin(), e.background.end(), c.planes[i].data);
        } else {
            bytes const& given = e.sources.at(sources++);
            EXPECT_GE(given.size(), touched) << "source of " << e.name << " too short";
            memory.push_back(std::make_unique<arena>(given.size() + 64));
            c.planes[i].data = place(*memory.back(), given.size(), row.sources_aligned && e.height == 1);
            std::copy(given.begin(), given.end(), c.planes[i].data);
        }
    }
    c.all_opaque = row.returns_opaque || e.ask_opaque ? &result.all_opaque : nullptr;
    library ? library(c) : row.reference(c);
    for (std::size_t i = 0; i < row.planes.size(); ++i)
        if (row.planes[i].written)
            result.planes.emplace_back(c.planes[i].data, c.planes[i].data + room_for(row, c, i) + 8);
    return result;
}

} // namespace

outcome convert(example const& e)
{
    conversion const* const row = find(e.name);
    EXPECT_NE(row, nullptr) << e.name;
    outcome const expected = convert_with(e, nullptr);
    if (!row->library)
        return expected;
    for (processors::processor const p : processors::variants()) {
        processors::force(p);
        outcome const got = convert_with(e, row->library);
        EXPECT_EQ(got.planes, expected.planes) << e.name << " by " << processors::name(p) << " and by the reference";
        EXPECT_EQ(got.all_opaque, expected.all_opaque) << e.name << " by " << processors::name(p);
    }
    processors::unforce();
    return expected;
}

bytes join(std::vector<bytes> const& pieces, int times)
{
    bytes whole;
    for (int i = 0; i < times; ++i)
        for (bytes const& piece : pieces)
            whole.insert(whole.end(), piece.begin(), piece.end());
    return whole;
}

bytes part(bytes const& whole, std::size_t from, std::size_t count)
{
    return {whole.begin() + static_cast<std::ptrdiff_t>(from),
            whole.begin() + static_cast<std::ptrdiff_t>(from + count)};
}

} // namespace quillo::conversions
