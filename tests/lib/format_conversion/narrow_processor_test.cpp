// Run on an emulated processor that has SSSE3 and nothing later. There a wide variant dies of its first wide
// instruction: that is the proof, independent of what the library says of itself, that a forced variant is what runs.
#include "lib/format_conversion/detail/processor.h"
#include "tests/support/arena.h"
#include "tests/support/conversions.h"
#include "tests/support/sweep.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>
#include <cstdlib>

namespace quillo::conversions {
namespace {

namespace processors = Processing::FXlib::format_conversion::detail;

void convert_as(processors::processor forced, conversion const& row)
{
    rlimit const no_core_files{0, 0};
    setrlimit(RLIMIT_CORE, &no_core_files);
    arena memory{1 << 16};
    call c{.width = 256, .height = 2};
    for (std::size_t i = 0; i < row.planes.size(); ++i)
        c.planes[i] = {memory.begin() + i * 8192, row.planes[i].length(256)};
    bool opaque = false;
    c.all_opaque = &opaque;
    processors::force(forced);
    row.library(c);
    std::exit(0);
}

class NarrowProcessor : public testing::TestWithParam<conversion>
{
};

TEST_P(NarrowProcessor, OffersOneVariantOnly)
{
    EXPECT_EQ(processors::variants(), std::vector{processors::processor::ssse3});
    EXPECT_EXIT(convert_as(processors::processor::ssse3, GetParam()), testing::ExitedWithCode(0), "");
}

TEST_P(NarrowProcessor, ForcedWideVariantDies)
{
    EXPECT_EXIT(convert_as(processors::processor::avx2, GetParam()), testing::KilledBySignal(SIGILL), "");
}

INSTANTIATE_TEST_SUITE_P(Conversions, NarrowProcessor, testing::ValuesIn(all()),
                         [](auto const& row) { return test_name(row.param); });

} // namespace
} // namespace quillo::conversions
