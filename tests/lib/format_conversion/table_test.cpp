// The table is whole: every front end and every kernel has its row, and no row is there twice.
#include "tests/support/conversions.h"
#include "tests/support/kernels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace quillo::conversions {
namespace {

// Source and its targets. What the library must offer, written down independently of the table.
std::multimap<std::string, std::vector<std::string>> const front_ends{
    {"bgra", {"bgra", "uyvy", "uyvy_a", "ycbcra", "crcbya"}},
    {"bgra_601", {"bgra_601", "uyvy_a", "ycbcra", "crcbya"}},
    {"bgra_709", {"bgra_709", "uyvy_a", "ycbcra", "crcbya"}},
    {"rgba", {"rgba", "uyvy", "uyvy_a", "ycbcra", "crcbya"}},
    {"rgba_601", {"rgba_601", "uyvy_a", "ycbcra", "crcbya"}},
    {"rgba_709", {"rgba_709", "uyvy_a", "ycbcra", "crcbya"}},
    {"bgrx", {"bgrx", "uyvy", "ycbcrx", "crcbyx"}},
    {"bgrx_601", {"bgrx_601", "uyvy", "ycbcrx", "crcbyx"}},
    {"bgrx_709", {"bgrx_709", "uyvy", "ycbcrx", "crcbyx"}},
    {"rgbx", {"rgbx", "uyvy", "ycbcrx", "crcbyx"}},
    {"rgbx_601", {"rgbx_601", "uyvy", "ycbcrx", "crcbyx"}},
    {"rgbx_709", {"rgbx_709", "uyvy", "ycbcrx", "crcbyx"}},
    {"bgr", {"bgr", "uyvy"}},
    {"bgr_601", {"bgr_601"}},
    {"bgr_709", {"bgr_709"}},
    {"ycbcra", {"ycbcra", "uyvy", "uyvy_a"}},
    {"ycbcrx", {"ycbcrx", "uyvy"}},
    {"vuya", {"vuya", "uyvy", "uyvy_a"}},
    {"vuyx", {"vuyx", "uyvy"}},
    {"uyvy", {"bgra", "bgra_601", "bgra_709", "rgba",     "rgba_601",  "rgba_709",  "bgrx",  "bgrx_601",  "bgrx_709",
              "rgbx", "rgbx_601", "rgbx_709", "bgr",      "bgr_601",   "bgr_709",   "r_g_b", "r_g_b_601", "r_g_b_709",
              "uyvy", "yuy2",     "y_uv_422", "y_uv_420", "y_u_v_422", "y_u_v_420", "y",     "ycbcrx",    "ya_uv"}},
    {"uyvy_a", {"bgra", "bgra_601", "bgra_709", "rgba", "rgba_601", "rgba_709", "uyvy", "ycbcra", "crcbya", "ya_uv"}},
    {"yuy2", {"uyvy"}},
    {"y", {"y", "uyvy"}},
    {"y_uv", {"y_uv", "y_uv_to422"}},
    {"y_u_v", {"y_uv", "y_uv_to422"}},
    {"black", {"uyvy", "alpha"}},
    {"v210", {"uyvy"}},
    {"p216", {"uyvy"}},
    {"alpha_u16", {"alpha"}},
    {"L", {"bgra"}},
};

// Flags, alignment included; 24 of the 32 combinations of line::rgba_and_bgra::uyvy exist, 4 of 8 of line::bgr::uyvy.
std::map<std::string, int> const kernel_instances{
    {"line::y::y", 4},
    {"line::bgra::bgra", 8},
    {"line::ycbcra::uyvy", 4},
    {"line::vuya::uyvy", 4},
    {"line::ycbcrx::uyvy", 4},
    {"line::vuyx::uyvy", 4},
    {"line::ycbcra::uyvy_a", 8},
    {"line::vuya::uyvy_a", 8},
    {"line::rgba_and_bgra::uyvy", 24},
    {"line::rgba_and_bgra::uyvy_a", 32},
    {"line::bgr::uyvy", 4},
    {"line::rgba_and_bgra::ycbcra", 32},
    {"line::rgba_and_bgra::ycbcrx", 32},
    {"line::uyvy::rgba_and_bgra", 16},
    {"line::uyvy_a::rgba_and_bgra", 16},
    {"line::uyvy::bgr", 8},
    {"line::uyvy::r_g_b", 8},
    {"line::uyvy::bgra_601", 4},
    {"line::uyvy::bgra_709", 4},
    {"line::uyvy::rgba_601", 4},
    {"line::uyvy::rgba_709", 4},
    {"line::uyvy::bgr_601", 4},
    {"line::uyvy::bgr_709", 4},
    {"line::uyvy_a::bgra_601", 4},
    {"line::uyvy_a::bgra_709", 4},
    {"line::uyvy_a::rgba_601", 4},
    {"line::uyvy_a::rgba_709", 4},
    {"line::uyvy::r_g_b_601", 4},
    {"line::uyvy::r_g_b_709", 4},
    {"line::uyvy_a::uyvy", 4},
    {"line::uyvy_a::crcbya", 4},
};

TEST(Table, HasEveryFrontEndOnce)
{
    std::multiset<std::string> expected{"convert_BGRA_to_UYVY_A", "convert_YUYA_to_UYVY_A", "composite"};
    for (auto const& [source, targets] : front_ends)
        for (std::string const& target : targets)
            expected.insert(source + "::" + target);
    EXPECT_EQ(expected.size(), 114u + 3u);

    std::multiset<std::string> found;
    for (conversion const& row : all()) {
        found.insert(std::string{row.name});
        EXPECT_TRUE(row.library || row.target().empty()) << row.name;
        EXPECT_TRUE(row.reference) << row.name;
    }
    // Once each; a conversion that is new since need not be in the list.
    for (std::string const& name : found)
        EXPECT_EQ(found.count(name), 1u) << name;
    EXPECT_THAT(expected, testing::IsSubsetOf(found));
}

TEST(Table, HasEveryKernelInstance)
{
    std::map<std::string, int> found;
    for (conversion const& row : all_kernels()) {
        ++found[std::string{row.name.substr(0, row.name.find_first_of("< "))}];
        EXPECT_NE(row.library, nullptr) << row.name;
    }
    EXPECT_THAT(found, testing::ContainerEq(kernel_instances));
}

TEST(Table, NamesSplitIntoSourceAndTarget)
{
    EXPECT_EQ(find("bgra_709::uyvy_a")->source(), "bgra_709");
    EXPECT_EQ(find("bgra_709::uyvy_a")->target(), "uyvy_a");
    EXPECT_EQ(find("no::such"), nullptr);
}

} // namespace
} // namespace quillo::conversions
