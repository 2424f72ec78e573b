// Everybody who receives: for the status, for the limits, and to end those who must go.
#pragma once

#include "publisher/gst_ptr.h"
#include "publisher/network_change.h"
#include "publisher/slow_receiver.h"
#include "publisher/viewer_limits.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace quillo::publisher {

using steady = std::chrono::steady_clock;

// One viewer of one mount. Counters are written by the viewer's source, read by anybody.
class receiver : public std::enable_shared_from_this<receiver>
{
  public:
    receiver(std::string source_path, std::string mount) : path_(std::move(source_path)), mount_(std::move(mount)) {}

    std::string const& path() const { return path_; }
    std::string const& mount() const { return mount_; }
    steady::time_point since() const { return since_; }

    // Who it is, from the request being handled on this thread.
    void identify(GstRTSPContext const& request);
    void identify(std::string address, std::string const& agent);
    void set_transport(std::string transport);
    // What sends it its sender reports.
    void set_reporter(GstElement* rtpbin);

    std::string address() const;
    std::string agent() const;
    std::string transport() const;

    // Ends the connection, on its own thread: gst-rtsp-server bears no other. The earliest of several calls counts.
    void end(std::chrono::milliseconds from_now);

    // To be called about once a second; does its work on that thread too. Tells of a slow one, keeps sound and picture
    // together where the network changed, and ends who acknowledged next to nothing of what waits for it for so long.
    void look_after(steady::duration limit);

    // What goes to it stood still, or its network did, for so long that it may have begun to count anew: sound and
    // picture are set right at once.
    void held_up();

    std::atomic<bool> playing{false};
    std::atomic<std::uint64_t> frames_sent{0};
    std::atomic<std::uint64_t> frames_dropped{0};
    std::atomic<std::uint64_t> blocks_dropped{0}; // of sound; packets where it is encoded

  private:
    std::string const path_;
    std::string const mount_;
    steady::time_point const since_ = steady::now();

    std::atomic<bool> ended_{false};

    void on_its_thread(std::chrono::milliseconds from_now, std::function<void(GstRTSPClient*)> f) const;
    void check_progress(GstRTSPClient* client, steady::duration limit);
    void set_report_interval(std::chrono::milliseconds interval);
    bool report_every(std::chrono::milliseconds interval) const; // and now; false without a reporter

    mutable std::mutex mutex_;
    std::string address_;
    std::string agent_;
    std::string transport_;
    weak_object<GstRTSPClient> client_;
    std::shared_ptr<GMainContext> context_; // of the connection's thread
    object_ptr<GSocket> socket_;
    element_ptr reporter_;

    // At the last progress; the connection's thread only.
    std::uint64_t acknowledged_ = 0; // bytes
    std::chrono::microseconds waited_for_reader_{0};
    steady::time_point last_progress_ = steady::now();
    slow_receiver slowness_;
    network_change network_;
    std::chrono::milliseconds report_interval_{5000}; // GStreamer's own at first
};

using receiver_ptr = std::shared_ptr<receiver>;

// Outlives the server: the threads of gst-rtsp-server let go of their viewers when they get to it.
class receivers
{
  public:
    explicit receivers(viewer_limits const& limits = {}) : raw_limit_(limits.raw), encoded_limit_(limits.encoded) {}

    // For those who come from now on.
    void set_limits(viewer_limits const& limits)
    {
        raw_limit_ = limits.raw;
        encoded_limit_ = limits.encoded;
    }
    viewer_limits limits() const { return {raw_limit_, encoded_limit_}; }

    // Null when that many are there already.
    receiver_ptr admit(std::string const& source_path, std::string const& mount, std::size_t limit);
    bool full(std::string const& source_path, std::string const& mount, std::size_t limit) const;
    void dismiss(receiver_ptr const& who);

    std::vector<receiver_ptr> all() const;

    // Of all viewers that a source ever had.
    struct totals
    {
        std::uint64_t frames_sent = 0;
        std::uint64_t frames_dropped = 0;
        std::uint64_t blocks_dropped = 0;
    };
    totals totals_of(std::string const& source_path) const;

    // Until nobody is left. False when that takes too long.
    bool wait_until_empty(std::chrono::milliseconds limit) const;

  private:
    std::size_t count(std::string const& source_path, std::string const& mount) const; // with the lock

    std::atomic<std::size_t> raw_limit_;
    std::atomic<std::size_t> encoded_limit_;
    mutable std::mutex mutex_;
    mutable std::condition_variable dismissed_;
    std::vector<receiver_ptr> receivers_;
    std::map<std::string, totals> gone_; // by path
};

} // namespace quillo::publisher
