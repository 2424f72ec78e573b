// What a connection has asked for, when one or the other goes.
#include "publisher/mounts/connection_medias.h"

#include <gtest/gtest.h>

#include <barrier>
#include <thread>

namespace quillo::publisher {
namespace {

class connection_medias_test : public testing::Test
{
  protected:
    static void SetUpTestSuite() { gst_init(nullptr, nullptr); }
};

using client_ptr = object_ptr<GstRTSPClient>;
using media_ptr = object_ptr<GstRTSPMedia>;

client_ptr make_client() { return client_ptr{gst_rtsp_client_new()}; }

media_ptr make_media() { return media_ptr{gst_rtsp_media_new(gst_bin_new(nullptr))}; }

class running_media
{
  public:
    running_media()
    {
        auto const factory = adopt<object_ptr<GstRTSPMediaFactory>>(gst_rtsp_media_factory_new());
        gst_rtsp_media_factory_set_launch(factory.get(), "( videotestsrc ! rtpvrawpay name=pay0 )");
        GstRTSPUrl* url = nullptr;
        gst_rtsp_url_parse("rtsp://localhost/any", &url);
        media_.reset(gst_rtsp_media_factory_construct(factory.get(), url));
        gst_rtsp_url_free(url);
        auto const threads = adopt<object_ptr<GstRTSPThreadPool>>(gst_rtsp_thread_pool_new());
        gst_rtsp_media_prepare(get(),
                               gst_rtsp_thread_pool_get_thread(threads.get(), GST_RTSP_THREAD_TYPE_MEDIA, nullptr));
    }
    ~running_media() { gst_rtsp_media_unprepare(get()); }
    running_media(running_media const&) = delete;
    running_media& operator=(running_media const&) = delete;

    GstRTSPMedia* get() { return media_.get(); }
    GstRTSPMediaStatus status() { return gst_rtsp_media_get_status(get()); }

  private:
    media_ptr media_;
};

TEST_F(connection_medias_test, all_end_with_the_connection)
{
    auto const client = make_client();
    running_media one, other;
    connection_medias::of(client.get()).add(one.get());
    connection_medias::of(client.get()).add(other.get());
    ASSERT_EQ(one.status(), GST_RTSP_MEDIA_STATUS_PREPARED);
    ASSERT_EQ(other.status(), GST_RTSP_MEDIA_STATUS_PREPARED);
    g_signal_emit_by_name(client.get(), "closed");
    EXPECT_EQ(one.status(), GST_RTSP_MEDIA_STATUS_UNPREPARED);
    EXPECT_EQ(other.status(), GST_RTSP_MEDIA_STATUS_UNPREPARED);
}

TEST_F(connection_medias_test, those_that_went_are_forgotten)
{
    auto const client = make_client();
    auto& medias = connection_medias::of(client.get());
    for (int k = 0; k < 100; ++k)
        medias.add(make_media().get());
    EXPECT_EQ(medias.count(), 1u);
    g_signal_emit_by_name(client.get(), "closed");
}

// A server that ends lets go of its connections on one thread, and of what they watched on others.
TEST_F(connection_medias_test, both_may_go_at_once)
{
    constexpr int times = 20'000;
    std::barrier meet{2};
    media_ptr media;
    std::thread other{[&] {
        for (int k = 0; k < times; ++k) {
            meet.arrive_and_wait();
            media.reset();
            meet.arrive_and_wait();
        }
    }};
    for (int k = 0; k < times; ++k) {
        auto client = make_client();
        media = make_media();
        connection_medias::of(client.get()).add(media.get());
        meet.arrive_and_wait();
        client.reset();
        meet.arrive_and_wait();
    }
    other.join();
}

} // namespace
} // namespace quillo::publisher
