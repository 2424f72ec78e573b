// Encoded pictures on their way into one viewer's pipeline. A viewer that is too slow misses pictures up to a key
// frame, so that it never decodes from one that it did not get.
#pragma once

#include "publisher/receivers.h"

#include <gst/app/gstappsrc.h>

#include <atomic>

namespace quillo::publisher {

class unit_queue
{
  public:
    // Pictures are left out once more than longest waits, and come again with a key frame when at most short_enough
    // does.
    unit_queue(GstClockTime longest, GstClockTime short_enough) : longest_(longest), short_enough_(short_enough) {}

    // From any thread: nothing goes out before the next key frame.
    void wait_for_key() { need_key_ = true; }

    // Counts the picture for who, sent or dropped; what comes before a viewer's first is not missed by it. False:
    // dropped.
    bool push(GstAppSrc* into, GstSample* unit, bool key, receiver& who);

  private:
    GstClockTime const longest_;
    GstClockTime const short_enough_;
    std::atomic<bool> need_key_{true};
};

} // namespace quillo::publisher
