#include "publisher/network_change.h"

namespace quillo::publisher {

auto network_change::look(time_point now, std::uint64_t dropped, std::optional<std::chrono::microseconds> round_trip)
    -> lately
{
    if (round_trip && !round_trip_)
        round_trip_ = round_trip;
    bool const moved = round_trip && std::chrono::abs(*round_trip - *round_trip_) >= counts;
    if (moved && *round_trip_ - *round_trip >= is_much)
        caught_up_ = now;
    if (moved)
        round_trip_ = round_trip;
    if (moved || dropped != dropped_)
        last_ = now;
    dropped_ = dropped;
    if (caught_up_ && now - *caught_up_ < smoothed_after)
        return lately::caught_up;
    return last_ && now - *last_ < settles_after ? lately::changed : lately::settled;
}

} // namespace quillo::publisher
