#include "publisher/network_change.h"

namespace quillo::publisher {

bool network_change::recent(time_point now, std::uint64_t dropped, std::optional<std::chrono::microseconds> round_trip)
{
    if (round_trip && !round_trip_)
        round_trip_ = round_trip;
    bool const moved = round_trip && std::chrono::abs(*round_trip - *round_trip_) >= counts;
    if (moved)
        round_trip_ = round_trip;
    if (moved || dropped != dropped_)
        last_ = now;
    dropped_ = dropped;
    return last_ && now - *last_ < settles_after;
}

} // namespace quillo::publisher
