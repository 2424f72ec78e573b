#include "bench/road/receiver.h"

#include "bench/road/statistics.h"
#include "bench/road/test_picture.h"

#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>

#include <chrono>
#include <memory>

namespace quillo::bench {

namespace {

struct unref
{
    void operator()(GstElement* e) const { gst_object_unref(e); }
    void operator()(GstSample* s) const { gst_sample_unref(s); }
};

std::string pipeline_text(std::string const& url, bool raw)
{
    std::string const source = "rtspsrc location=" + url + " latency=0 protocols=tcp name=s s. ! ";
    std::string const decode =
        raw ? "application/x-rtp,media=video ! rtpvrawdepay ! video/x-raw,format=UYVY"
            : "application/x-rtp,media=video ! rtph264depay ! h264parse ! avdec_h264 max-threads=1 ! "
              "video/x-raw,format=I420";
    return source + decode + " ! appsink name=sink sync=false max-buffers=4";
}

} // namespace

nlohmann::json receive(std::string const& url, bool raw, int width, int height, double seconds)
{
    gst_init(nullptr, nullptr);
    GError* error = nullptr;
    auto const began = monotonic_ns();
    std::unique_ptr<GstElement, unref> pipeline(gst_parse_launch(pipeline_text(url, raw).c_str(), &error));
    if (!pipeline)
        return {{"error", error->message}};
    std::unique_ptr<GstElement, unref> sink(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);

    test_picture const expected(width, height);
    std::vector<double> latencies_ms;
    std::uint32_t last = 0;
    std::int64_t lost = 0, different = 0, frames = 0, first_ns = 0, other_size = 0;
    while (first_ns == 0 || monotonic_ns() - first_ns < static_cast<std::int64_t>(seconds * 1e9)) {
        std::unique_ptr<GstSample, unref> sample(
            gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), 5 * GST_SECOND));
        if (!sample)
            break;
        auto const now = monotonic_ns();
        GstVideoInfo info;
        GstVideoFrame frame;
        gst_video_info_from_caps(&info, gst_sample_get_caps(sample.get()));
        if (info.width != width || info.height != height ||
            !gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample.get()), GST_MAP_READ)) {
            ++other_size;
            continue;
        }
        auto const* data = static_cast<std::uint8_t const*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
        stamp const s = read_stamp(data + (raw ? 1 : 0), raw ? 2 : 1, GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0));
        if (s.sent_ns > 0 && s.sent_ns <= now) {
            if (first_ns == 0)
                first_ns = now;
            if (last != 0 && s.counter > last)
                lost += s.counter - last - 1;
            if (s.counter != last)
                latencies_ms.push_back(static_cast<double>(now - s.sent_ns) / 1e6);
            last = s.counter;
            ++frames;
            if (raw && !expected.equals(s, data))
                ++different;
        }
        gst_video_frame_unmap(&frame);
    }
    auto const ended = monotonic_ns();
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    double const span = first_ns ? static_cast<double>(ended - first_ns) / 1e9 : 0;
    return {{"frames", frames},
            {"fps", span > 0 ? static_cast<double>(frames) / span : 0},
            {"lost", lost},
            {"different", different},
            {"other_size", other_size},
            {"first_picture_ms", static_cast<double>(first_ns - began) / 1e6},
            {"latency_ms", summary(latencies_ms)},
            {"cores", process_cpu_s() / (static_cast<double>(ended - began) / 1e9)}};
}

} // namespace quillo::bench
