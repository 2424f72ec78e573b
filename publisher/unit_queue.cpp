#include "publisher/unit_queue.h"

namespace quillo::publisher {

bool unit_queue::push(GstAppSrc* into, GstSample* unit, bool key, receiver& who)
{
    auto const waits = gst_app_src_get_current_level_time(into);
    if (waits > longest_ || (need_key_ && (!key || waits > short_enough_))) {
        need_key_ = true;
        if (who.frames_sent > 0)
            ++who.frames_dropped;
        return false;
    }
    need_key_ = false;
    gst_app_src_push_sample(into, unit);
    ++who.frames_sent;
    return true;
}

} // namespace quillo::publisher
