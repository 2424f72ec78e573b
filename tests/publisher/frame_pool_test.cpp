// Frames of one shape that are used again.
#include "publisher/frame_pool.h"

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

namespace quillo::publisher {
namespace {

GstVideoInfo info_of(int width, int height)
{
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_UYVY, static_cast<guint>(width), static_cast<guint>(height));
    return info;
}

std::ptrdiff_t open_descriptors()
{
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator{"/proc/self/fd"}, fs::directory_iterator{});
}

bool fill(GstBuffer* buffer, char value)
{
    return gst_buffer_memset(buffer, 0, static_cast<guint8>(value), gst_buffer_get_size(buffer)) > 0;
}

bool is_full_of(GstBuffer* buffer, char value)
{
    gsize const size = gst_buffer_get_size(buffer);
    for (gsize k = 0; k < size; ++k)
        if (gst_buffer_memcmp(buffer, k, &value, 1) != 0)
            return false;
    return true;
}

class frame_pool_test : public testing::Test
{
  protected:
    static void SetUpTestSuite() { gst_init(nullptr, nullptr); }

    frame_pool pool_;
};

TEST_F(frame_pool_test, without_a_shape_there_are_no_frames)
{
    EXPECT_EQ(nullptr, pool_.blank());
    pool_.clear();
}

TEST_F(frame_pool_test, a_frame_that_came_back_is_used_again)
{
    pool_.set_info(info_of(16, 4));
    auto first = pool_.blank();
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(16u * 4 * 2, gst_buffer_get_size(first.get()));
    GstBuffer* const where = first.get();
    auto const second = pool_.blank();
    EXPECT_NE(where, second.get());
    first.reset();
    EXPECT_EQ(where, pool_.blank().get());
}

TEST_F(frame_pool_test, a_frame_that_is_out_stays_good_and_others_can_be_made_after_clear)
{
    pool_.set_info(info_of(16, 4));
    auto const out = pool_.blank();
    ASSERT_TRUE(out && fill(out.get(), 1));
    pool_.clear();
    auto const next = pool_.blank();
    ASSERT_TRUE(next && fill(next.get(), 2));
    EXPECT_TRUE(is_full_of(out.get(), 1));
    pool_.set_info(info_of(32, 8));
    auto const larger = pool_.blank();
    ASSERT_TRUE(larger && fill(larger.get(), 3));
    EXPECT_EQ(32u * 8 * 2, gst_buffer_get_size(larger.get()));
    EXPECT_TRUE(is_full_of(out.get(), 1));
    EXPECT_TRUE(is_full_of(next.get(), 2));
}

// A publisher whose descriptors grow with its work looks as if it leaked.
TEST_F(frame_pool_test, its_descriptors_are_there_from_the_first)
{
    pool_.set_info(info_of(16, 4));
    auto const before = open_descriptors();
    for (int round = 0; round < 3; ++round) {
        auto const one = pool_.blank();
        auto const other = pool_.blank();
        EXPECT_EQ(before, open_descriptors());
        pool_.clear();
        EXPECT_EQ(before, open_descriptors());
    }
}

} // namespace
} // namespace quillo::publisher
