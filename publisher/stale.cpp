#include "publisher/stale.h"

#include <algorithm>
#include <utility>

namespace quillo::publisher {

bool stale_items::is_stale(std::chrono::nanoseconds late, std::chrono::nanoseconds now)
{
    bool later = false;
    if (least_) {
        auto const usual = std::min(*least_, least_before_.value_or(*least_));
        later = late - usual > (stale_since_ ? good_again : too_late);
    }
    if (later && now - stale_since_.value_or(now) < longest) {
        if (!stale_since_)
            stale_since_ = now;
        return true;
    }
    // So late for so long: that is how it is now.
    if (later)
        least_.reset();
    stale_since_.reset();
    remember(late, now);
    return false;
}

void stale_items::remember(std::chrono::nanoseconds late, std::chrono::nanoseconds now)
{
    if (!least_) {
        least_before_.reset();
        span_began_ = now;
    } else if (now - span_began_ >= remembered) {
        least_before_ = std::exchange(least_, std::nullopt);
        span_began_ = now;
    }
    least_ = std::min(late, least_.value_or(late));
}

} // namespace quillo::publisher
