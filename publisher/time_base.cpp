#include "publisher/time_base.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace quillo::publisher {

namespace {

using ns = time_base::ns;

constexpr std::int64_t far_apart_100ns = 36'000'000'000ll * 24 * 30; // a month: no two items of one run

// a - b in ns; false when they are too far apart to belong together.
bool distance(std::int64_t a_100ns, std::int64_t b_100ns, ns& result)
{
    std::int64_t difference = 0;
    if (__builtin_sub_overflow(a_100ns, b_100ns, &difference))
        return false;
    if (difference > far_apart_100ns || difference < -far_apart_100ns)
        return false;
    result = difference * 100;
    return true;
}

ns duration(std::int64_t samples, int rate)
{
    // Whole seconds apart, so that a long run does not overflow.
    return samples / rate * 1'000'000'000 + samples % rate * 1'000'000'000 / rate;
}

} // namespace

std::optional<ns> time_base::by_timecode(std::int64_t timecode_100ns) const
{
    ns since_anchor = 0;
    if (!anchored_ || !distance(timecode_100ns, anchor_timecode_, since_anchor))
        return std::nullopt;
    return anchor_time_ + since_anchor;
}

// The item's stream stays as late as it used to be, so that a jump of the timecodes is none of the times.
ns time_base::anchor(std::int64_t timecode_100ns, ns arrival, lateness& of)
{
    std::shift_right(recent_.begin(), recent_.end(), 1);
    recent_.front() = arrival;
    ++anchors_;
    anchored_ = true;
    anchor_timecode_ = timecode_100ns;
    anchor_time_ = arrival - of.usual();
    if (anchors_ > flap_count && recent_.front() - recent_.back() < flap_window) {
        free_until_ = arrival + free_time;
        anchored_ = false;
        pictures_.forget();
        sound_.forget();
    }
    return anchor_time_;
}

ns time_base::place_picture(std::int64_t timecode_100ns, ns arrival)
{
    if (auto const time = by_timecode(timecode_100ns); time && std::abs(*time - arrival) < tolerance) {
        pictures_.follow(arrival - *time);
        return *time;
    }
    if (anchored_ && last_sound_ && arrival - *last_sound_ < sound_runs)
        return arrival - pictures_.usual();
    return anchor(timecode_100ns, arrival, pictures_);
}

ns time_base::place_sound(std::int64_t timecode_100ns, ns arrival)
{
    if (!last_sound_ || arrival - *last_sound_ >= sound_runs)
        sound_.forget();
    last_sound_ = arrival;
    auto const time = by_timecode(timecode_100ns);
    auto const moved = time ? arrival - *time - sound_.usual() : tolerance;
    auto const before = std::exchange(suspected_move_, std::nullopt);
    if (std::abs(moved) >= tolerance)
        return anchor(timecode_100ns, arrival, sound_);
    if (std::abs(moved) < move || !sound_.known()) {
        sound_.take(arrival - *time);
        return *time;
    }
    if (before && std::abs(moved - *before) <= same_move)
        return anchor(timecode_100ns, arrival, sound_);
    suspected_move_ = moved;
    return *time;
}

ns time_base::picture(std::int64_t timecode_100ns, ns arrival)
{
    ns const time = arrival < free_until_ ? arrival : place_picture(timecode_100ns, arrival);
    last_picture_ = any_picture_ ? std::max(time, last_picture_ + smallest_step) : time;
    any_picture_ = true;
    return last_picture_;
}

ns time_base::repeated_picture(ns now)
{
    last_picture_ = any_picture_ ? std::max(now, last_picture_ + smallest_step) : now;
    any_picture_ = true;
    return last_picture_;
}

ns time_base::sound_end() const { return run_rate_ ? run_start_ + duration(run_samples_, run_rate_) : 0; }

time_base::block time_base::append(ns wanted, int samples, int rate)
{
    ns const end = sound_end();
    bool const first = run_rate_ == 0;
    if (!first && wanted < end - sound_snap)
        return {0, false, true};
    bool const near = !first && wanted <= end + sound_snap;
    if (near && rate == run_rate_) {
        run_samples_ += samples;
        return {end, true, false};
    }
    run_start_ = first ? wanted : std::max(wanted, end);
    run_samples_ = samples;
    run_rate_ = rate;
    return {run_start_, near, false};
}

time_base::block time_base::sound(std::int64_t timecode_100ns, ns arrival, int samples, int rate)
{
    if (arrival < free_until_)
        return untimed_sound(arrival, samples, rate);
    return append(place_sound(timecode_100ns, arrival), samples, rate);
}

time_base::block time_base::untimed_sound(ns arrival, int samples, int rate)
{
    ns const end = sound_end();
    bool const in_step = end != 0 && std::abs(end - arrival) < tolerance;
    return append(in_step ? end : arrival, samples, rate);
}

} // namespace quillo::publisher
