// One browser that watches a source by WebRTC: the encoded pictures and sound of the default mount, over a connection
// of its own.
#pragma once

#include "publisher/encoded_feed.h"
#include "publisher/page/loop_thread.h"
#include "publisher/publisher.h"
#include "publisher/unit_queue.h"

#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace quillo::publisher {

// What a viewer says to its browser. Called on the loop.
class rtc_talk
{
  public:
    virtual ~rtc_talk() = default;
    virtual void offer(int id, std::string const& sdp) = 0;
    virtual void candidate(int id, unsigned mline, std::string const& text) = 0;
    virtual void over(int id, std::string const& why) = 0; // may end the viewer
};

// Made, used and destroyed on the loop, but for what an encoded_viewer is called with.
class rtc_viewer : public std::enable_shared_from_this<rtc_viewer>, encoded_viewer
{
  public:
    // who is already admitted. Throws std::runtime_error when WebRTC is not to be had here.
    rtc_viewer(int id, loop_thread& loop, served_source what, std::shared_ptr<receivers> all, receiver_ptr who,
               rtc_talk& talk);
    rtc_viewer(rtc_viewer const&) = delete;
    rtc_viewer& operator=(rtc_viewer const&) = delete;
    ~rtc_viewer() override;

    void start(); // makes the offer
    void answer(std::string const& sdp);
    void candidate(unsigned mline, std::string const& text);

    std::string const& path() const { return what_.from->path(); }

    // From the time of a picture to the network, smoothed; not a number before the first.
    double delay_ms() const { return delay_ms_; }

  private:
    void access_unit(GstSample* unit, bool key) override;
    void opus_packet(GstSample* packet) override;
    void held_up() override {}
    void ended() override;

    void connect_signals();
    void make_offer();
    void offer_made(GstPromise* promise);
    void state_changed();
    void key_wanted();
    void on_loop(void (rtc_viewer::*f)());

    static constexpr GstClockTime longest_queue = 200 * GST_MSECOND;

    int const id_;
    loop_thread& loop_;
    served_source const what_;
    std::shared_ptr<receivers> const all_;
    receiver_ptr const who_;
    rtc_talk& talk_;

    element_ptr pipeline_;
    element_ptr rtc_;
    element_ptr video_in_;
    element_ptr audio_in_;
    bool attached_ = false;
    steady::time_point last_key_{};

    std::atomic<bool> connected_{false};
    unit_queue units_{longest_queue, longest_queue};
    std::atomic<double> delay_ms_{std::numeric_limits<double>::quiet_NaN()}; // no picture yet
};

} // namespace quillo::publisher
