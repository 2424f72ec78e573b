// What a viewer of encoded pictures gets when it cannot take them all.
#include "publisher/unit_queue.h"

#include <gtest/gtest.h>

namespace quillo::publisher {
namespace {

constexpr GstClockTime frame = 20 * GST_MSECOND;

// A live pipeline that is paused takes nothing out of its source, as a viewer does whose connection is stuck.
class unit_queue_test : public testing::Test
{
  protected:
    static void SetUpTestSuite() { gst_init(nullptr, nullptr); }

    void SetUp() override
    {
        pipeline_ = adopt<element_ptr>(gst_parse_launch(
            "appsrc name=in is-live=true format=time max-bytes=0 max-buffers=0 ! fakesink sync=false", nullptr));
        gst_object_ref_sink(pipeline_.get());
        in_ = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "in"));
        set_state(GST_STATE_PAUSED);
    }

    void TearDown() override { set_state(GST_STATE_NULL); }

    void set_state(GstState state) { gst_element_set_state(pipeline_.get(), state); }

    bool push(bool key)
    {
        GstBuffer* const buffer = gst_buffer_new();
        GST_BUFFER_PTS(buffer) = frame * number_++;
        GST_BUFFER_DURATION(buffer) = frame;
        auto const unit = adopt<sample_ptr>(gst_sample_new(buffer, nullptr, nullptr, nullptr));
        gst_buffer_unref(buffer);
        return queue_.push(GST_APP_SRC(in_.get()), unit.get(), key, who_);
    }

    void let_it_take_everything()
    {
        set_state(GST_STATE_PLAYING);
        while (gst_app_src_get_current_level_buffers(GST_APP_SRC(in_.get())) > 0)
            g_usleep(1000);
        set_state(GST_STATE_PAUSED);
        gst_element_get_state(pipeline_.get(), nullptr, nullptr, GST_CLOCK_TIME_NONE);
    }

    unit_queue queue_{10 * frame, 5 * frame};
    receiver who_{"/source", "default"};

  private:
    element_ptr pipeline_;
    element_ptr in_;
    GstClockTime number_ = 0;
};

TEST_F(unit_queue_test, begins_with_a_key_frame_and_misses_nothing_before_it)
{
    EXPECT_FALSE(push(false));
    EXPECT_FALSE(push(false));
    EXPECT_TRUE(push(true));
    EXPECT_TRUE(push(false));
    EXPECT_EQ(who_.frames_sent, 2u);
    EXPECT_EQ(who_.frames_dropped, 0u);
}

TEST_F(unit_queue_test, slow_viewer_misses_pictures_up_to_a_key_frame_that_it_has_room_for)
{
    int sent = 0;
    while (sent < 100 && push(sent == 0))
        ++sent;
    EXPECT_NEAR(sent, 10, 2);
    EXPECT_FALSE(push(false));
    EXPECT_FALSE(push(true)); // far behind still: it would only be late
    let_it_take_everything();
    EXPECT_FALSE(push(false));
    EXPECT_TRUE(push(true));
    EXPECT_TRUE(push(false));
    EXPECT_EQ(who_.frames_sent, static_cast<unsigned>(sent) + 2);
    EXPECT_EQ(who_.frames_dropped, 4u);
}

TEST_F(unit_queue_test, waits_for_a_key_frame_when_told_to)
{
    EXPECT_TRUE(push(true));
    queue_.wait_for_key();
    EXPECT_FALSE(push(false));
    EXPECT_TRUE(push(true));
    EXPECT_EQ(who_.frames_dropped, 1u);
}

} // namespace
} // namespace quillo::publisher
