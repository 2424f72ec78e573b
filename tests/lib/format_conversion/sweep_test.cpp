// Every front end against its reference.
#include "tests/support/sweep.h"

#include <gtest/gtest.h>

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

INSTANTIATE_TEST_SUITE_P(Conversions, Sweep, testing::ValuesIn(all()),
                         [](auto const& row) { return test_name(row.param); });

} // namespace
} // namespace quillo::conversions
