#include "publisher/slug.h"

#include <gtest/gtest.h>

namespace quillo::publisher {
namespace {

TEST(slug, is_lower_case_with_single_dashes)
{
    EXPECT_EQ(slug("Adobe Premiere Pro"), "adobe-premiere-pro");
    EXPECT_EQ(slug("  A -- b/c?d=1&../e  "), "a-b-c-d-1-e");
    EXPECT_EQ(slug("Übung é"), "ubung-e");
}

TEST(slug, of_nothing_printable_is_source)
{
    EXPECT_EQ(slug(""), "source");
    EXPECT_EQ(slug("///"), "source");
    EXPECT_EQ(slug("\xFF\xFE"), "source");
}

TEST(slug, is_cut_without_a_dash_at_its_end)
{
    std::string const fits(59, 'a');
    EXPECT_EQ(slug(fits + " b"), fits);
    EXPECT_EQ(slug(std::string(300, 'a')), std::string(60, 'a'));
}

TEST(clean_name, keeps_text_and_drops_control_characters)
{
    EXPECT_EQ(clean_name("Ümläut \n\x1B[31m名", 255), "Ümläut [31m名");
    EXPECT_EQ(clean_name("bad\xFF", 255), "bad\uFFFD");
}

TEST(clean_name, is_cut_between_characters)
{
    EXPECT_EQ(clean_name("ab名", 4), "ab");
    EXPECT_EQ(clean_name("ab名", 5), "ab名");
}

} // namespace
} // namespace quillo::publisher
