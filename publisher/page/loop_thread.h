// A thread that runs a GLib main loop of its own, and how other threads leave work for it.
#pragma once

#include "publisher/gst_ptr.h"

#include <chrono>
#include <functional>
#include <thread>

namespace quillo::publisher {

// A source on a loop, gone with the object. Made and destroyed on the loop's thread.
class loop_timer
{
  public:
    loop_timer() = default;
    loop_timer(GMainContext* context, std::chrono::milliseconds period, std::function<void()> f);
    loop_timer(loop_timer&&) = default;
    loop_timer& operator=(loop_timer&&) = default;
    ~loop_timer() = default;

  private:
    struct destroys
    {
        void operator()(GSource* source) const
        {
            g_source_destroy(source);
            g_source_unref(source);
        }
    };
    std::unique_ptr<GSource, destroys> source_;
};

class loop_thread
{
  public:
    loop_thread();
    loop_thread(loop_thread const&) = delete;
    loop_thread& operator=(loop_thread const&) = delete;
    ~loop_thread(); // what was posted before is done

    GMainContext* context() const { return context_.get(); }

    void post(std::function<void()> f);

    // Returns when f has run, with its exception. Not from the thread itself.
    void call(std::function<void()> const& f);

  private:
    context_ptr const context_;
    loop_ptr const loop_;
    std::thread thread_;
};

} // namespace quillo::publisher
