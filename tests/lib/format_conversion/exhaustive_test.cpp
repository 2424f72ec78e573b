// Every colour there is, 2^24 of them, through every conversion with a matrix: in blocks and in tails, by every
// processor variant. Takes minutes, so it is a command of its own: build/PRESET/tests/lib/format_conversion/
// conversion_exhaustive
#include "lib/format_conversion/detail/processor.h"
#include "tests/support/conversions.h"
#include "tests/support/sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>

namespace quillo::conversions {
namespace {

namespace processors = Processing::FXlib::format_conversion::detail;

constexpr int colours = 1 << 24;
constexpr int at_once = 1 << 16;

bool is_rgb(std::string_view layout)
{
    return layout.starts_with("bgr") || layout.starts_with("rgb") || layout.starts_with("r_g_b");
}

std::vector<conversion> rows_with_a_matrix()
{
    std::vector<conversion> rows;
    for (conversion const& row : all())
        if (row.library && is_rgb(row.source()) != is_rgb(row.target()) && row.source() != "L" && !row.target().empty())
            rows.push_back(row);
    return rows;
}

// Each colour twice, as both pixels of a pair. In UYVY the three bytes are Cb, Y and Cr.
void write_pair(unsigned char* pair, plane_shape const& shape, std::uint32_t colour, unsigned char alpha)
{
    unsigned char const bytes[3] = {static_cast<unsigned char>(colour), static_cast<unsigned char>(colour >> 8),
                                    static_cast<unsigned char>(colour >> 16)};
    if (shape.bytes_per_pixel == 1) {
        pair[0] = pair[1] = alpha;
        return;
    }
    if (shape.bytes_per_pixel == 2) {
        std::copy_n(bytes, 3, pair);
        pair[3] = bytes[1];
        return;
    }
    for (int pixel = 0; pixel < 2; ++pixel) {
        std::copy_n(bytes, 3, pair + pixel * shape.bytes_per_pixel);
        if (shape.bytes_per_pixel == 4)
            pair[pixel * 4 + 3] = alpha;
    }
}

class Exhaustive : public testing::TestWithParam<conversion>
{
  protected:
    Exhaustive() : row_(GetParam())
    {
        for (std::size_t i = 0; i < row_.planes.size(); ++i) {
            given_.emplace_back(std::size_t{at_once} * 16 + 64);
            expected_.emplace_back(given_.back().size());
        }
    }

    // Pairs side by side in one line, or one to a line: all blocks or all tails.
    bool compare(std::uint32_t first, bool one_to_a_line, unsigned char alpha, int option)
    {
        call c{.width = one_to_a_line ? 2 : 2 * at_once, .height = one_to_a_line ? at_once : 1, .option = option};
        bool opaque = false;
        c.all_opaque = &opaque;
        call ours = c;
        for (std::size_t i = 0; i < row_.planes.size(); ++i) {
            plane_shape const& shape = row_.planes[i];
            int const stride = one_to_a_line ? 16 : shape.length(2);
            c.planes[i] = {given_[i].data(), one_to_a_line ? stride : shape.length(c.width)};
            ours.planes[i] = c.planes[i];
            if (shape.written) {
                ours.planes[i].data = expected_[i].data();
                std::ranges::fill(expected_[i], static_cast<unsigned char>(0));
                continue;
            }
            for (std::uint32_t n = 0; n < at_once; ++n)
                write_pair(c.planes[i].data + n * static_cast<unsigned>(stride), shape, first + n, alpha);
        }
        row_.reference(ours);
        for (processors::processor const variant : processors::variants()) {
            processors::force(variant);
            for (std::size_t i = 0; i < row_.planes.size(); ++i)
                if (row_.planes[i].written)
                    std::ranges::fill(given_[i], static_cast<unsigned char>(0));
            row_.library(c);
            processors::unforce();
            for (std::size_t i = 0; i < row_.planes.size(); ++i)
                if (row_.planes[i].written && given_[i] != expected_[i]) {
                    auto const at = std::ranges::mismatch(given_[i], expected_[i]).in1 - given_[i].begin();
                    ADD_FAILURE() << row_.name << " by " << processors::name(variant) << ", colours from " << first
                                  << ", alpha " << int{alpha} << ", plane " << i << " byte " << at << ": expected "
                                  << int{expected_[i][static_cast<std::size_t>(at)]} << ", got "
                                  << int{given_[i][static_cast<std::size_t>(at)]};
                    return false;
                }
        }
        return true;
    }

    bool compare_all(bool one_to_a_line)
    {
        // Only compositing over black mixes alpha with colour.
        bool const over_black = row_.name == "bgra::uyvy" || row_.name == "rgba::uyvy";
        std::set<int> const alphas = over_black ? std::set{0, 1, 2, 64, 127, 128, 129, 200, 254, 255} : std::set{173};
        std::set<int> const options = row_.last == last_argument::color_space ? std::set{601, 709} : std::set{0};
        for (int const option : options)
            for (int const alpha : alphas)
                for (std::uint32_t first = 0; first < colours; first += at_once)
                    if (!compare(first, one_to_a_line, static_cast<unsigned char>(alpha), option))
                        return false;
        return true;
    }

  private:
    conversion const& row_;
    std::vector<std::vector<unsigned char>> given_;
    std::vector<std::vector<unsigned char>> expected_;
};

TEST_P(Exhaustive, EveryColourInBlocks) { EXPECT_TRUE(compare_all(false)); }

TEST_P(Exhaustive, EveryColourInTails) { EXPECT_TRUE(compare_all(true)); }

INSTANTIATE_TEST_SUITE_P(Conversions, Exhaustive, testing::ValuesIn(rows_with_a_matrix()),
                         [](auto const& row) { return test_name(row.param); });

} // namespace
} // namespace quillo::conversions
