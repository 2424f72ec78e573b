#include "bench/road/receiver.h"

#include "bench/road/statistics.h"
#include "bench/road/test_picture.h"
#include "lib/gst/gst_ptr.h"

#include <gst/app/gstappsink.h>

#include <cmath>

namespace quillo::bench {

namespace {

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

nlohmann::json receive(std::string const& url, reception what, int width, int height, double seconds)
{
    gst_init(nullptr, nullptr);
    GError* error = nullptr;
    auto const began = monotonic_ns();
    element_ptr pipeline(gst_parse_launch(pipeline_text(url, what.raw).c_str(), &error));
    if (!pipeline)
        return {{"error", error->message}};
    element_ptr sink(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);

    test_picture const expected(width, height);
    std::vector<double> latencies_ms;
    std::uint32_t last = 0;
    std::vector<double> lost_at_s;
    std::int64_t before_play = 0, lost = 0, different = 0, frames = 0, first_ns = 0, other_size = 0;
    while (first_ns == 0 || monotonic_ns() - first_ns < static_cast<std::int64_t>(seconds * 1e9)) {
        sample_ptr sample(gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), 5 * GST_SECOND));
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
        stamp const s =
            read_stamp(data + (what.raw ? 1 : 0), what.raw ? 2 : 1, GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0));
        if (s.sent_ns > 0 && s.sent_ns <= now) {
            if (first_ns == 0)
                first_ns = now;
            // The first picture was made for the description; what came between it and PLAY was not asked for.
            if (frames == 1) {
                before_play = s.counter - last - 1;
            } else if (last != 0 && s.counter > last + 1) {
                lost += s.counter - last - 1;
                lost_at_s.push_back(static_cast<double>(now - first_ns) / 1e9);
            }
            if (s.counter != last)
                latencies_ms.push_back(static_cast<double>(now - s.sent_ns) / 1e6);
            last = s.counter;
            ++frames;
            if (what.raw && what.compare && !expected.equals(s, data))
                ++different;
        }
        gst_video_frame_unmap(&frame);
    }
    auto const ended = monotonic_ns();
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    double const span = first_ns ? static_cast<double>(ended - first_ns) / 1e9 : 0;
    return {{"frames", frames},
            {"fps", span > 0 ? static_cast<double>(frames) / span : 0},
            {"before_play", before_play},
            {"lost", lost},
            {"lost_at_s", lost_at_s},
            {"different", what.raw && what.compare ? nlohmann::json(different) : nlohmann::json(nullptr)},
            {"other_size", other_size},
            {"first_picture_ns", first_ns},
            {"first_picture_ms", static_cast<double>(first_ns - began) / 1e6},
            {"latency_ms", summary(latencies_ms)},
            {"cores", process_cpu_s() / (static_cast<double>(ended - began) / 1e9)}};
}

nlohmann::json count(std::string const& url, int rate, double seconds)
{
    gst_init(nullptr, nullptr);
    element_ptr const pipeline(gst_parse_launch(("rtspsrc location=" + url +
                                                 " latency=0 protocols=tcp name=s s. ! application/x-rtp,media=video ! "
                                                 "appsink name=sink sync=false")
                                                    .c_str(),
                                                nullptr));
    element_ptr const sink(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    double const period = 90000.0 / rate;
    std::int64_t frames = 0, lost = 0, lost_packets = 0, bytes = 0, began = 0;
    std::vector<double> lost_at_s;
    std::uint32_t last_time = 0;
    std::uint16_t last_number = 0;
    while (began == 0 || monotonic_ns() - began < static_cast<std::int64_t>(seconds * 1e9)) {
        sample_ptr const sample(gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), 5 * GST_SECOND));
        if (!sample)
            break;
        GstBuffer* const packet = gst_sample_get_buffer(sample.get());
        std::uint8_t head[8] = {};
        gst_buffer_extract(packet, 0, head, sizeof head);
        auto const number = static_cast<std::uint16_t>(head[2] << 8 | head[3]);
        auto const time = static_cast<std::uint32_t>(head[4]) << 24 | static_cast<std::uint32_t>(head[5]) << 16 |
                          static_cast<std::uint32_t>(head[6]) << 8 | head[7];
        bytes += static_cast<std::int64_t>(gst_buffer_get_size(packet));
        if (began == 0)
            began = monotonic_ns();
        else
            lost_packets += static_cast<std::uint16_t>(number - last_number - 1);
        if (frames == 0 || time != last_time) {
            auto const missing = frames == 0 ? 0 : std::lround((time - last_time) / period) - 1;
            if (missing > 0) {
                lost += missing;
                lost_at_s.push_back(static_cast<double>(monotonic_ns() - began) / 1e9);
            }
            ++frames;
        }
        last_time = time;
        last_number = number;
    }
    double const span = static_cast<double>(monotonic_ns() - began) / 1e9;
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return {{"frames", frames},
            {"fps", static_cast<double>(frames) / span},
            {"lost", lost},
            {"lost_at_s", lost_at_s},
            {"lost_packets", lost_packets},
            {"megabits_per_s", static_cast<double>(bytes) * 8e-6 / span},
            {"cores", process_cpu_s() / span}};
}

} // namespace quillo::bench
