#include "tools/stand_in_host/playback_clock.h"

namespace quillo::stand_in {

namespace {

double in_seconds(std::chrono::steady_clock::duration d) { return std::chrono::duration<double>(d).count(); }

} // namespace

void* playback_clock::arm()
{
    clock_report const so_far = report();
    std::lock_guard const lock(mutex);
    done = so_far;
    runs.push_back({this});
    current = &runs.back();
    sum = 0;
    moved = false;
    last = steady::now();
    return &runs.back();
}

void playback_clock::stop()
{
    clock_report const so_far = report();
    std::lock_guard const lock(mutex);
    done = so_far;
    current = nullptr;
    moved = false;
}

ticks playback_clock::elapsed() const
{
    std::lock_guard const lock(mutex);
    return sum;
}

std::chrono::milliseconds playback_clock::silence() const
{
    std::lock_guard const lock(mutex);
    return std::chrono::duration_cast<std::chrono::milliseconds>(steady::now() - last);
}

clock_report playback_clock::report() const
{
    std::lock_guard const lock(mutex);
    clock_report result = done;
    if (moved) {
        result.elapsed_s += seconds(sum - sum_at_first);
        result.steady_s += in_seconds(last - first);
    }
    return result;
}

void playback_clock::advance(void* context, ticks increment)
{
    auto const* const of = static_cast<run const*>(context);
    if (of != nullptr)
        of->owner->add(of, increment);
}

void playback_clock::add(run const* of, ticks increment)
{
    {
        std::lock_guard const lock(mutex);
        if (current == nullptr) {
            log.breach("clock callback after StopPlaybackClock returned");
            return;
        }
        if (of != current)
            return; // of a run that a start without a stop replaced
        if (increment < 0)
            log.breach("clock set back");
        auto const now = steady::now();
        sum += increment;
        if (!moved) {
            first = now;
            sum_at_first = sum;
            moved = true;
        } else {
            auto const interval = std::chrono::duration<double>(now - last).count();
            deviations.add(
                std::chrono::nanoseconds(static_cast<std::int64_t>(std::abs(interval - seconds(increment)) * 1e9)));
        }
        last = now;
        ++done.callbacks;
    }
    news.ring();
}

} // namespace quillo::stand_in
