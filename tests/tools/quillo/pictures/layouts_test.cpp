#include "tools/quillo/pictures/errors.h"
#include "tools/quillo/pictures/layouts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo::pictures {
namespace {

using testing::AllOf;
using testing::HasSubstr;

std::string refusal(std::string const& from, std::string const& to)
{
    try {
        choose(from, to);
    } catch (request_error const& error) {
        return error.what();
    }
    return "";
}

TEST(Layout, MatrixSuffixIsTakenOff)
{
    EXPECT_EQ(layout{"uyvy_709"}.base, "uyvy");
    EXPECT_EQ(layout{"uyvy_709"}.matrix, 709);
    EXPECT_EQ(layout{"bgra_601"}.matrix, 601);
    EXPECT_EQ(layout{"y_uv_422"}.base, "y_uv_422");
    EXPECT_EQ(layout{"y_uv_422"}.matrix, 0);
}

TEST(Choose, MatrixMayStandAtEitherName)
{
    EXPECT_EQ(choose("bgrx_601", "uyvy").row->name, "bgrx_601::uyvy");
    EXPECT_EQ(choose("bgrx", "uyvy_601").row->name, "bgrx_601::uyvy");
    EXPECT_THAT(refusal("bgrx_601", "uyvy_709"), HasSubstr("matrix cannot change"));
}

TEST(Choose, NoSuffixIs709)
{
    EXPECT_EQ(choose("bgra", "uyvy_a").row->name, "bgra::uyvy_a");
    EXPECT_EQ(choose("bgra", "uyvy_709").row->name, "bgra::uyvy");
}

TEST(Choose, MatrixByArgument)
{
    choice const chosen = choose("uyvy_601", "bgra");
    EXPECT_EQ(chosen.row->name, "uyvy::bgra");
    EXPECT_EQ(chosen.matrix, 601);
}

TEST(Choose, SuffixDoesNotMatterWithoutMatrix)
{
    EXPECT_EQ(choose("vuya_601", "uyvy").row->name, "vuya::uyvy");
    EXPECT_EQ(choose("L", "bgra").row->name, "L::bgra");
}

TEST(Choose, RefusalListsWhatThereIs)
{
    EXPECT_THAT(refusal("bgra", "nv12"),
                AllOf(HasSubstr("from bgra to nv12"), HasSubstr("uyvy_a"), HasSubstr("crcbya")));
    EXPECT_THAT(refusal("bgra", "uyvy_601"), HasSubstr("uyvy (709 only)"));
    EXPECT_THAT(refusal("nonsense", "uyvy"), AllOf(HasSubstr("no layout nonsense"), HasSubstr("vuya to uyvy")));
    EXPECT_THAT(refusal("", ""), HasSubstr("no layout"));
}

// The plug-in's own converters are no layouts.
TEST(ListOfConversions, HasLibraryRowsOnly)
{
    EXPECT_THAT(list_of_conversions(), testing::Not(HasSubstr("convert_")));
    EXPECT_THAT(list_of_conversions(), testing::Not(HasSubstr("composite")));
}

} // namespace
} // namespace quillo::pictures
