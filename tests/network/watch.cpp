// network_watch URL tcp|udp: a receiver that does not give up. Shows nothing, says what it sees, a line each:
//   open                              asked for the source
//   picture ARRIVED_NS TIME_NS NUMBER shown by the counter strip, -1 where it cannot be read
//   beep TIME_NS                      the first loud sample after a silence
//   ended                             by the publisher, by an error, or by a second without pictures
// Times are the receiver's, of one connection; ARRIVED_NS is CLOCK_MONOTONIC. A line on standard input is the address
// to go to from now on; its end is the end.
#include "publisher/gst_ptr.h"
#include "tools/stand_in_host/pattern/counter_strip.h"

#include <gst/app/gstappsink.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <string>

namespace {

using namespace std::chrono_literals;
using clock = std::chrono::steady_clock;
using quillo::adopt;

constexpr auto patience = 1s;
constexpr int loud = 32767 / 10;
constexpr int silence_between_beeps = 9600; // samples of 48 kHz

std::mutex saying;

template <class... Parts>
void say(Parts const&... parts)
{
    std::lock_guard const lock{saying};
    ((std::cout << parts << ' '), ...) << std::endl;
}

class connection
{
  public:
    connection(std::string const& url, std::string const& transport)
    {
        say("open");
        std::string const text =
            "rtspsrc name=s latency=200 protocols=" + transport +
            " rtph264depay name=video_in ! avdec_h264 max-threads=1 ! video/x-raw,format=I420"
            " ! appsink name=video sync=false async=false"
            " rtpopusdepay name=audio_in ! opusdec ! audioconvert ! audioresample"
            " ! audio/x-raw,format=S16LE,channels=1,rate=48000 ! appsink name=audio sync=false async=false";
        pipeline_ = adopt<quillo::element_ptr>(gst_parse_launch(text.c_str(), nullptr));
        auto const source = adopt<quillo::element_ptr>(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "s"));
        g_object_set(source.get(), "location", url.c_str(), nullptr);
        g_signal_connect(source.get(), "pad-added", G_CALLBACK(link), pipeline_.get());
        listen("video", [](GstSample* sample, connection* self) { self->picture(sample); });
        listen("audio", [](GstSample* sample, connection* self) { self->sound(sample); });
        gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
    }
    connection(connection const&) = delete;
    connection& operator=(connection const&) = delete;
    ~connection()
    {
        gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
        say("ended");
    }

    bool over() const
    {
        auto const bus = adopt<quillo::bus_ptr>(gst_element_get_bus(pipeline_.get()));
        auto const message = adopt<quillo::message_ptr>(
            gst_bus_pop_filtered(bus.get(), static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
        return message || clock::now() - last_.load() > patience;
    }

  private:
    static void link(GstElement*, GstPad* pad, gpointer pipeline)
    {
        auto const caps = adopt<quillo::caps_ptr>(gst_pad_get_current_caps(pad));
        if (!caps)
            return;
        std::string const media = gst_structure_get_string(gst_caps_get_structure(caps.get(), 0), "media");
        auto const to = adopt<quillo::element_ptr>(gst_bin_get_by_name(GST_BIN(pipeline), (media + "_in").c_str()));
        auto const sink = adopt<quillo::pad_ptr>(gst_element_get_static_pad(to.get(), "sink"));
        gst_pad_link(pad, sink.get());
    }

    using taker = void (*)(GstSample*, connection*);

    void listen(char const* name, taker take)
    {
        auto const sink = adopt<quillo::element_ptr>(gst_bin_get_by_name(GST_BIN(pipeline_.get()), name));
        g_object_set(sink.get(), "emit-signals", TRUE, nullptr);
        g_object_set_data(G_OBJECT(sink.get()), "take", reinterpret_cast<gpointer>(take));
        g_signal_connect(sink.get(), "new-sample", G_CALLBACK(+[](GstAppSink* from, gpointer self) {
                             auto const sample = adopt<quillo::sample_ptr>(gst_app_sink_pull_sample(from));
                             auto const chosen = reinterpret_cast<taker>(g_object_get_data(G_OBJECT(from), "take"));
                             if (sample)
                                 chosen(sample.get(), static_cast<connection*>(self));
                             return GST_FLOW_OK;
                         }),
                         this);
    }

    void picture(GstSample* sample)
    {
        auto const now = clock::now();
        last_ = now;
        GstVideoInfo info;
        if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample)))
            return;
        quillo::mapped_frame frame{info, gst_sample_get_buffer(sample), GST_MAP_READ};
        if (!frame)
            return;
        auto const number = quillo::stand_in::read_counter(
            {static_cast<unsigned char const*>(GST_VIDEO_FRAME_PLANE_DATA(frame.get(), 0)),
             GST_VIDEO_FRAME_PLANE_STRIDE(frame.get(), 0), 1, info.width, info.height});
        say("picture", now.time_since_epoch().count(), GST_BUFFER_PTS(gst_sample_get_buffer(sample)),
            number ? static_cast<long>(*number) : -1l);
    }

    void sound(GstSample* sample)
    {
        GstBuffer* const buffer = gst_sample_get_buffer(sample);
        GstMapInfo map;
        if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
            return;
        auto const* const samples = reinterpret_cast<gint16 const*>(map.data);
        for (std::size_t k = 0; k < map.size / sizeof(gint16); ++k, ++silent_)
            if (std::abs(samples[k]) > loud) {
                if (silent_ > silence_between_beeps)
                    say("beep", GST_BUFFER_PTS(buffer) + k * GST_SECOND / 48000);
                silent_ = 0;
            }
        gst_buffer_unmap(buffer, &map);
    }

    quillo::element_ptr pipeline_;
    std::atomic<clock::time_point> last_{clock::now()};
    int silent_ = 0;
};

} // namespace

int main(int count, char** arguments)
{
    gst_init(&count, &arguments);
    if (count != 3)
        return 64;
    std::string url = arguments[1];
    auto current = std::make_unique<connection>(url, arguments[2]);
    for (;;) {
        pollfd waiting{STDIN_FILENO, POLLIN, 0};
        if (::poll(&waiting, 1, 50) > 0) {
            if (!std::getline(std::cin, url))
                return 0;
            current.reset();
            current = std::make_unique<connection>(url, arguments[2]);
        } else if (current->over()) {
            current.reset();
            current = std::make_unique<connection>(url, arguments[2]);
        }
    }
}
