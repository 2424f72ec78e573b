// Every front end against its reference.
#include "tests/support/sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

namespace quillo::conversions {
namespace {

class Sweep : public testing::TestWithParam<conversion>
{
  protected:
    static trial_bench& bench()
    {
        static trial_bench shared;
        return shared;
    }

    // False after the first difference; more would only say the same.
    bool try_one(int width, int height, stride_kind kind, contents content)
    {
        std::string const problem = bench().run(draw_trial(GetParam(), width, height, kind, content, random_), random_);
        EXPECT_EQ(problem, "") << "seed " << seed();
        return problem.empty();
    }

    contents any_content() { return static_cast<contents>(random_.below(kinds_of_contents)); }

    random_numbers random_{GetParam().name};
};

TEST_P(Sweep, EqualsReference)
{
    for (int round = 0; round < plan().rounds; ++round)
        for (int const width : plan().widths)
            for (int const height : plan().heights)
                for (int kind = 0; kind < kinds_of_strides; ++kind)
                    if (!try_one(width, height, static_cast<stride_kind>(kind), any_content()))
                        return;
}

TEST_P(Sweep, EqualsReferenceOnPictures)
{
    for (int round = 0; round < plan().rounds; ++round)
        for (int const width : plan().large_widths)
            for (int const height : plan().large_heights)
                for (stride_kind const kind : {stride_kind::joining, stride_kind::aligned, stride_kind::mixed})
                    if (!try_one(width, height, kind, any_content()))
                        return;
}

// 49152 x 262145 pixels are 3 x 2^32 + 49152, and so a run of 49152.
TEST_P(Sweep, JoinedLinesCountPixelsIn32Bits)
{
    constexpr int width = 49152;
    constexpr int height = 262145;
    trial const t = draw_trial(GetParam(), width, height, stride_kind::joining, any_content(), random_);
    call strides{.width = width, .height = height};
    for (std::size_t i = 0; i < GetParam().planes.size(); ++i)
        strides.planes[i].stride = t.strides[i];
    if (is_joined(GetParam(), strides)) {
        std::string const problem = bench().run(t, random_);
        EXPECT_EQ(problem, "") << "seed " << seed();
    }
}

// Targets that do not fit the caches are stored past them. Rows take turns here, by the seed, unless all is swept.
TEST_P(Sweep, EqualsReferenceBeyondTheCaches)
{
    conversion const& row = GetParam();
    auto const turn =
        static_cast<std::uint64_t>(&*std::ranges::find(all(), row.name, &conversion::name) - all().data());
    if (plan().rounds_beyond_caches == 0 && (seed() + turn) % 4 != 0)
        return;
    constexpr long bytes_beyond_caches = 12'700'000;
    constexpr int width = 4080;
    long line = 0;
    for (plane_shape const& shape : row.planes)
        line += shape.written ? shape.reach(width) : 0;
    int const height = static_cast<int>(bytes_beyond_caches / line) + 1;
    for (int round = 0; round < std::max(1, plan().rounds_beyond_caches); ++round)
        for (stride_kind const kind : {stride_kind::tight, stride_kind::negative_aligned}) {
            trial_bench large{60'000'000};
            trial const t = draw_trial(row, width, height, kind, any_content(), random_);
            std::string const problem = large.run(t, random_);
            EXPECT_EQ(problem, "") << "seed " << seed();
            if (!problem.empty())
                return;
        }
}

INSTANTIATE_TEST_SUITE_P(Conversions, Sweep, testing::ValuesIn(all()),
                         [](auto const& row) { return test_name(row.param); });

} // namespace
} // namespace quillo::conversions
