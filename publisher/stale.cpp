#include "publisher/stale.h"

namespace quillo::publisher {

bool stale_items::is_stale(std::chrono::nanoseconds late, std::chrono::nanoseconds now)
{
    bool const later = usual_ && late - *usual_ > (stale_since_ ? good_again : too_late);
    if (later && now - stale_since_.value_or(now) < longest) {
        if (!stale_since_)
            stale_since_ = now;
        return true;
    }
    usual_ = usual_ && !later ? *usual_ + (late - *usual_) / 8 : late;
    stale_since_.reset();
    return false;
}

} // namespace quillo::publisher
