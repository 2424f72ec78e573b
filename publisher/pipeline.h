// A pipeline of ours that runs by itself, from appsrc to appsink.
#pragma once

#include "publisher/gst_ptr.h"

#include <functional>
#include <stdexcept>
#include <string>

namespace quillo::publisher {

// Makes the common clock (CLOCK_MONOTONIC) the running time of a pipeline, so that time stamps mean the same in all.
void run_on_common_clock(GstElement* pipeline);

enum class pushed {
    queued,
    in_place_of_another, // the queue was full, and its oldest buffer had to go
    refused              // the appsrc is about to start or to end
};

bool has_started(GstElement* appsrc);
bool is_full(GstElement* appsrc);

// Push into a leaky appsrc, without waiting.
pushed push_buffer(GstElement* appsrc, GstBuffer* buffer);
pushed push_sample(GstElement* appsrc, GstSample* sample);

// Tells of each error that a pipeline reports, on the thread that met it. Whatever else it reports is let go.
using error_teller = std::function<void(std::string const& what)>;
void tell_errors(GstElement* pipeline, error_teller tell);
void log_error(std::string const& what);

class pipeline
{
  public:
    // Elements as for gst-launch, with an appsrc "in" and an appsink "out". taken gets each sample of "out", its
    // time stamp on the common clock, on the pipeline's thread. Throws std::runtime_error when it cannot be made.
    pipeline(std::string const& description, std::function<void(GstSample*)> taken, error_teller failed = log_error);
    pipeline(pipeline const&) = delete;
    pipeline& operator=(pipeline const&) = delete;
    ~pipeline(); // taken is not called any more

    pushed push(GstBuffer* buffer);

    GstElement* get() const { return pipeline_.get(); }
    GstElement* in() const { return in_.get(); }
    GstElement* out() const { return out_.get(); }

  private:
    static GstFlowReturn new_sample(GstElement*, gpointer self);

    element_ptr pipeline_;
    element_ptr in_;
    element_ptr out_;
    std::function<void(GstSample*)> taken_;
};

} // namespace quillo::publisher
