// Everybody who receives: for the status, for the limits, and to end those who must go.
#pragma once

#include "publisher/gst_ptr.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace quillo::publisher {

using steady = std::chrono::steady_clock;

// One viewer of one mount. Counters are written by the viewer's source, read by anybody.
class receiver
{
  public:
    receiver(std::string source_path, std::string mount) : path_(std::move(source_path)), mount_(std::move(mount)) {}

    std::string const& path() const { return path_; }
    std::string const& mount() const { return mount_; }
    steady::time_point since() const { return since_; }

    // Who it is, from the request being handled on this thread.
    void identify(GstRTSPContext const& request);
    void set_transport(std::string transport);

    std::string address() const;
    std::string agent() const;
    std::string transport() const;

    // The connection; null once it is gone.
    object_ptr<GstRTSPClient> client() const;

    std::atomic<bool> playing{false};
    std::atomic<std::uint64_t> frames_sent{0};
    std::atomic<std::uint64_t> frames_dropped{0};

  private:
    std::string const path_;
    std::string const mount_;
    steady::time_point const since_ = steady::now();

    mutable std::mutex mutex_;
    std::string address_;
    std::string agent_;
    std::string transport_;
    std::shared_ptr<GWeakRef> client_;
};

using receiver_ptr = std::shared_ptr<receiver>;

class receivers
{
  public:
    static constexpr std::size_t max_raw = 16;
    static constexpr std::size_t max_encoded = 64;

    // Null when that many are there already.
    receiver_ptr admit(std::string const& source_path, std::string const& mount, std::size_t limit);
    void dismiss(receiver_ptr const& who);

    std::vector<receiver_ptr> all() const;

    // What ends a receiver's connection; called on any thread, must not wait. Set once, before anybody is admitted.
    void set_closer(std::function<void(receiver_ptr)> closer) { closer_ = std::move(closer); }
    void end(receiver_ptr const& who) const { closer_(who); }

  private:
    mutable std::mutex mutex_;
    std::vector<receiver_ptr> receivers_;
    std::function<void(receiver_ptr)> closer_ = [](receiver_ptr const&) {};
};

} // namespace quillo::publisher
