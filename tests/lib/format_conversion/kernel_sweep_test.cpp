// Every kernel instance, called directly, against its reference.
#include "tests/support/kernels.h"
#include "tests/support/sweep.h"

#include <gtest/gtest.h>

namespace quillo::conversions {
namespace {

class KernelSweep : public testing::TestWithParam<conversion>
{
  protected:
    bool try_one(trial_bench& bench, int count, contents content)
    {
        trial const t = draw_trial(GetParam(), count, 1, stride_kind::padded, content, random_);
        std::string const problem = bench.run(t, random_);
        EXPECT_EQ(problem, "") << "seed " << seed();
        return problem.empty();
    }

    random_numbers random_{GetParam().name};
};

TEST_P(KernelSweep, EqualsReference)
{
    static trial_bench bench;
    for (int round = 0; round < plan().rounds; ++round) {
        for (int const count : plan().widths)
            for (int content = 0; content < kinds_of_contents; ++content)
                if (!try_one(bench, count, static_cast<contents>(content)))
                    return;
        for (int const count : plan().large_widths)
            if (!try_one(bench, count, static_cast<contents>(random_.below(kinds_of_contents))))
                return;
    }
    // A run shorter than nothing is nothing too.
    try_one(bench, -1, contents::noise);
}

INSTANTIATE_TEST_SUITE_P(Kernels, KernelSweep, testing::ValuesIn(all_kernels()),
                         [](auto const& row) { return test_name(row.param); });

} // namespace
} // namespace quillo::conversions
