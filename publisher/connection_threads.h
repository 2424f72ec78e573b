// The threads of gst-rtsp-server: some that serve the connections, and one for each receiver's pipeline. They are the
// library's; here they are counted, so that an end can wait for them.
#pragma once

#include "publisher/gst_ptr.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace quillo::publisher {

// Thread-safe.
class running_threads
{
  public:
    void add();
    void remove();
    // False when that takes too long.
    bool wait_until_none(std::chrono::milliseconds limit) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    int running_ = 0;
};

// A thread counts from before it runs until it does nothing more for a connection.
object_ptr<GstRTSPThreadPool> make_thread_pool(std::shared_ptr<running_threads> counted, int most_for_connections);

} // namespace quillo::publisher
