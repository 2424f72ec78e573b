// A forced processor variant is the one that runs.
#include "lib/format_conversion/detail/processor.h"
#include "tests/support/sweep.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace quillo::conversions {
namespace {

namespace processors = Processing::FXlib::format_conversion::detail;

// Which variants a row really runs as, each one forced in turn.
std::set<processors::processor> variants_of(conversion const& row)
{
    std::set<processors::processor> seen;
    trial_bench bench;
    random_numbers random{row.name};
    for (processors::processor const forced : processors::variants()) {
        EXPECT_EQ(bench.run(draw_trial(row, 256, 2, stride_kind::tight, contents::noise, random), random), "");
        call c{.width = 256, .height = 2};
        arena memory{1 << 16};
        bool opaque = false;
        c.all_opaque = &opaque;
        for (std::size_t i = 0; i < row.planes.size(); ++i)
            c.planes[i] = {memory.begin() + i * 8192, row.planes[i].length(256)};
        processors::force(forced);
        row.library(c);
        // A conversion that gains nothing from the widest processor has no variant for it, but then takes the next.
        EXPECT_LE(processors::last_ran(), forced) << row.name;
        EXPECT_TRUE(forced == processors::processor::ssse3 || processors::last_ran() != processors::processor::ssse3)
            << row.name << " has no variant but the narrowest";
        seen.insert(processors::last_ran());
        processors::unforce();
    }
    return seen;
}

TEST(Variants, TheForcedOneRuns)
{
    std::map<processors::processor, int> rows;
    int converted = 0;
    for (conversion const& row : all()) {
        ++converted;
        for (processors::processor const p : variants_of(row))
            ++rows[p];
    }
    for (auto const& [p, count] : rows)
        RecordProperty(processors::name(p), count);
    ASSERT_GT(converted, 0);
    for (processors::processor const p : processors::variants())
        EXPECT_GT(rows[p], 0) << processors::name(p);
    EXPECT_EQ(rows[processors::processor::ssse3], converted);
}

TEST(Variants, TheNarrowestIsAlwaysThereAndTheBestIsChosen)
{
    ASSERT_FALSE(processors::variants().empty());
    EXPECT_EQ(processors::variants().front(), processors::processor::ssse3);
    EXPECT_EQ(processors::chosen(), processors::variants().back());
}

TEST(Variants, NothingIsForcedUnlessAskedFor)
{
    bool const fast_strings = processors::fast_strings();
    bool const source_order = processors::in_source_order();
    auto const streaming_from = processors::streaming_from();
    EXPECT_TRUE(streaming_from == processors::streaming_bytes || streaming_from == processors::streaming_never);
    processors::force(processors::processor::ssse3);
    processors::force_streaming_from(0);
    processors::force_fast_strings(!fast_strings);
    processors::force_source_order(!source_order);
    EXPECT_EQ(processors::chosen(), processors::processor::ssse3);
    EXPECT_EQ(processors::streaming_from(), 0);
    EXPECT_NE(processors::fast_strings(), fast_strings);
    EXPECT_NE(processors::in_source_order(), source_order);
    processors::unforce();
    EXPECT_EQ(processors::chosen(), processors::variants().back());
    EXPECT_EQ(processors::streaming_from(), streaming_from);
    EXPECT_EQ(processors::fast_strings(), fast_strings);
    EXPECT_EQ(processors::in_source_order(), source_order);
}

} // namespace
} // namespace quillo::conversions
