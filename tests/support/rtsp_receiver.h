// A stock receiver in the test's process: rtspsrc, and what stands behind it.
#pragma once

#include "publisher/gst_ptr.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quillo::testing {

using namespace std::chrono_literals;

class rtsp_receiver
{
  public:
    enum class over { tcp, udp };
    enum class decode {
        raw, // RFC 4175 and L24
        h264 // and Opus
    };

    struct picture
    {
        int width;
        int height;
        std::string format;
        std::vector<unsigned char> bytes; // rows without gaps
        std::int64_t pts_ns;
        std::int64_t arrived_ns; // CLOCK_MONOTONIC
        int payload;             // number of its stream's payload type
    };

    rtsp_receiver(std::string const& url, over transport, decode kind);
    rtsp_receiver(rtsp_receiver const&) = delete;
    rtsp_receiver& operator=(rtsp_receiver const&) = delete;
    ~rtsp_receiver();

    // The next picture that fits, older ones are forgotten. Nothing when none comes in time.
    std::optional<picture> wait_for_picture(std::function<bool(picture const&)> const& fits = {},
                                            std::chrono::milliseconds limit = 20s);
    // Waits until so much sound has come, and takes it.
    std::vector<unsigned char> wait_for_sound(std::size_t bytes, std::chrono::milliseconds limit = 20s);
    // The connection ended, in order or with an error.
    bool wait_for_end(std::chrono::milliseconds limit = 20s);

    std::size_t pictures() const;
    std::size_t sender_reports() const; // that have come, of the stream with fewer of them
    std::string sdp() const;            // empty before it has come
    std::string sound_caps() const;

    // Instead of keeping pictures: called for each as it stands in the receiver's memory, on the receiver's thread.
    std::function<void(GstVideoFrame&, std::int64_t arrived_ns)> on_frame;
    static std::vector<unsigned char> tight_bytes(GstVideoFrame& frame);
    void start();

  private:
    static void stream_began(GstElement* rtpbin, guint stream, guint ssrc, gpointer self);
    void count_reports(GstElement* rtpbin, unsigned stream);
    void note(GstMessage* progress);
    void link(GstPad* pad);
    void take_picture(GstSample* sample, int payload);
    void take_sound(GstSample* sample);

    element_ptr pipeline_;
    GstElement* const source_; // in it
    decode const kind_;
    std::mutex linking_;
    bool closing_ = false;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<picture> waiting_;
    std::vector<unsigned char> sound_;
    std::string sound_caps_;
    std::string sdp_;
    std::size_t pictures_ = 0;
    bool opening_ = false;
    std::map<unsigned, std::size_t> reports_;
};

} // namespace quillo::testing
