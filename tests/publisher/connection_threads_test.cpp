#include "publisher/connection_threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace quillo::testing {
namespace {

using namespace std::chrono_literals;
using publisher::running_threads;

GstRTSPThread* begin(GstRTSPThreadPool* pool, GstRTSPThreadType type)
{
    GstRTSPContext of_nobody{};
    return gst_rtsp_thread_pool_get_thread(pool, type, &of_nobody);
}

TEST(connection_threads, count_from_their_beginning_until_their_end)
{
    gst_init(nullptr, nullptr);
    auto const counted = std::make_shared<running_threads>();
    auto const pool = publisher::make_thread_pool(counted, 1);
    EXPECT_TRUE(counted->wait_until_none(0ms));

    auto* const of_connection = begin(pool.get(), GST_RTSP_THREAD_TYPE_CLIENT);
    auto* const of_pipeline = begin(pool.get(), GST_RTSP_THREAD_TYPE_MEDIA);
    EXPECT_FALSE(counted->wait_until_none(0ms));
    gst_rtsp_thread_stop(of_connection);
    EXPECT_FALSE(counted->wait_until_none(100ms));
    gst_rtsp_thread_stop(of_pipeline);
    EXPECT_TRUE(counted->wait_until_none(10s));
}

TEST(connection_threads, what_a_thread_is_busy_with_is_waited_for)
{
    gst_init(nullptr, nullptr);
    auto const counted = std::make_shared<running_threads>();
    auto pool = publisher::make_thread_pool(counted, 1);
    auto* const thread = begin(pool.get(), GST_RTSP_THREAD_TYPE_CLIENT);
    std::atomic<bool> begun{false}, done{false};
    auto work = [&] {
        begun = true;
        std::this_thread::sleep_for(200ms);
        done = true;
    };
    g_source_ptr busy{g_idle_source_new()};
    g_source_set_callback(
        busy.get(),
        [](gpointer data) -> gboolean {
            (*static_cast<decltype(work)*>(data))();
            return G_SOURCE_REMOVE;
        },
        &work, nullptr);
    g_source_attach(busy.get(), thread->context);
    // GLib looks into a source's context to let go of it: not from here any more once the thread may free that.
    busy.reset();
    while (!begun)
        std::this_thread::yield();
    gst_rtsp_thread_stop(thread);
    pool.reset();
    EXPECT_TRUE(counted->wait_until_none(10s));
    EXPECT_TRUE(done);
}

} // namespace
} // namespace quillo::testing
