// The comparison itself: conversions with planted faults must be noticed.
#include "lib/format_conversion/detail/processor.h"
#include "tests/support/sweep.h"

#include <gtest/gtest.h>

#include <gmock/gmock.h>

namespace quillo::conversions {
namespace {

// Copies bytes, the way its row says or with a fault.
void copy(call const& c)
{
    for (int line = 0; line < c.height; ++line)
        for (int i = 0; i < c.width; ++i)
            c.planes[1].data[c.planes[1].stride * line + i] = c.planes[0].data[c.planes[0].stride * line + i];
}

void copy_and_write_one_more(call const& c)
{
    copy(c);
    c.planes[1].data[c.planes[1].stride * (c.height - 1) + c.width] ^= 1;
}

void copy_and_write_far_away(call const& c)
{
    copy(c);
    c.planes[1].data[c.planes[1].stride * (c.height - 1) + c.width + 200] ^= 1;
}

void copy_and_read_one_more(call const& c)
{
    copy(c);
    [[maybe_unused]] unsigned char const volatile beyond = c.planes[0].data[c.width];
}

void copy_and_read_one_before(call const& c)
{
    copy(c);
    [[maybe_unused]] unsigned char const volatile before = c.planes[0].data[-1];
}

void copy_but_the_last(call const& c)
{
    call shorter = c;
    --shorter.width;
    copy(shorter);
}

void copy_and_change_the_source(call const& c)
{
    copy(c);
    c.planes[0].data[0] ^= 1;
}

void copy_and_say_transparent(call const& c)
{
    copy(c);
    *c.all_opaque = false;
}

void copy_and_say_opaque(call const& c)
{
    copy(c);
    *c.all_opaque = true;
}

void copy_wrongly_past_the_caches(call const& c)
{
    copy(c);
    if (Processing::FXlib::format_conversion::detail::streaming_from() == 0)
        c.planes[1].data[0] ^= 1;
}

class Trial : public testing::Test
{
  protected:
    std::string run(void (*library)(call const&), placing place = placing::between_guards)
    {
        conversion row{"copy", {in(1), out(1)}, last_argument::none, library, copy};
        row.joins_lines = false;
        trial t = draw_trial(row, 40, 3, stride_kind::tight, contents::noise, random_);
        t.places.fill(place);
        t.height = place == placing::between_guards ? 3 : 1;
        return trial_bench{}.run(t, random_);
    }

    random_numbers random_{"trial"};
};

TEST_F(Trial, FaultlessCopiesPass)
{
    for (placing const place : {placing::between_guards, placing::before_unreadable, placing::after_unreadable})
        EXPECT_EQ(run(copy, place), "");
}

TEST_F(Trial, TellsWhereTheFirstDifferenceIs)
{
    EXPECT_THAT(run(copy_and_write_one_more), testing::HasSubstr("line 3 byte 0"));
    EXPECT_THAT(run(copy_but_the_last), testing::HasSubstr("line 0 byte 39 (pixel 39): expected"));
}

TEST_F(Trial, GuardsAreCompared) { EXPECT_NE(run(copy_and_write_far_away), ""); }

TEST_F(Trial, SourcesAreCompared) { EXPECT_THAT(run(copy_and_change_the_source), testing::HasSubstr("plane 0")); }

TEST_F(Trial, PicturesAreStoredPastTheCachesToo)
{
    EXPECT_THAT(run(copy_wrongly_past_the_caches), testing::HasSubstr("past the caches"));
}

TEST_F(Trial, OpaqueResultIsCompared)
{
    conversion row{"copy", {in(1), out(1)}, last_argument::none, copy_and_say_transparent, copy_and_say_opaque};
    row.returns_opaque = true;
    trial const t = draw_trial(row, 40, 3, stride_kind::padded, contents::noise, random_);
    EXPECT_THAT(trial_bench{}.run(t, random_), testing::HasSubstr("opaque: expected true"));
}

using TrialDeathTest = Trial;

TEST_F(TrialDeathTest, ReadingBeyondTheEndCrashesAndSaysWhere)
{
    EXPECT_DEATH(run(copy_and_read_one_more, placing::before_unreadable), "signal 11 in: copy 40 x 1.*offsets end end");
}

TEST_F(TrialDeathTest, ReadingBeforeTheStartCrashes)
{
    EXPECT_DEATH(run(copy_and_read_one_before, placing::after_unreadable), "signal 11 in: copy 40 x 1");
}

// The product of two negative sizes is positive, but there is no pixel whose alpha could be set.
TEST(NegativeSizes, HaveNoPixels)
{
    trial t{.row = find("rgbx_601::crcbyx"), .width = -3, .height = -3, .content = contents::half_opaque};
    t.places[0] = placing::before_unreadable;
    trial_bench bench;
    random_numbers random{"negative sizes"};
    EXPECT_EQ(bench.run(t, random), "");
}

TEST(Seed, SamePurposeSameNumbers)
{
    random_numbers a{"x"};
    random_numbers b{"x"};
    random_numbers c{"y"};
    EXPECT_EQ(a.next(), b.next());
    EXPECT_NE(a.next(), c.next());
}

TEST(PlaneShape, V210Reach)
{
    plane_shape const groups = in(0, reach_rule::v210_groups);
    EXPECT_EQ(groups.reach(2), 0);
    EXPECT_EQ(groups.reach(3), 16);
    EXPECT_EQ(groups.reach(8), 16);
    EXPECT_EQ(groups.reach(9), 32);
    EXPECT_EQ(groups.length(7), 32);
    EXPECT_EQ(groups.joins_at(6), 16);
    EXPECT_EQ(groups.joins_at(3), 8);
    EXPECT_EQ(groups.joins_at(4), -1);
}

} // namespace
} // namespace quillo::conversions
