// The host's clock. It stands still unless the module moves it through the callback.
#pragma once

#include "tools/stand_in_host/bell.h"
#include "tools/stand_in_host/histogram.h"
#include "tools/stand_in_host/host_time.h"
#include "tools/stand_in_host/journal.h"

#include <chrono>
#include <deque>
#include <mutex>

namespace quillo::stand_in {

// How the module's clock went against the steady one, over all runs.
struct clock_report
{
    long callbacks = 0;
    double elapsed_s = 0; // by the module's clock, from the first callback of each run on
    double steady_s = 0;  // the same by the steady clock
    double drift_ms() const { return (elapsed_s - steady_s) * 1000; }
    double drift_ppm() const { return steady_s > 0 ? (elapsed_s / steady_s - 1) * 1e6 : 0; }
};

// A run lasts from one arm to the next arm or stop. A callback after stop is a breach.
class playback_clock
{
  public:
    playback_clock(journal& log_, bell& news_) : log(log_), news(news_) {}

    // [player's thread] Begins a run at 0 and gives the context for its callbacks.
    void* arm();
    void stop();

    // Sum of the run's increments, whatever the speed.
    ticks elapsed() const;

    // Since the last callback of the run, or since arm.
    std::chrono::milliseconds silence() const;

    clock_report report() const;
    histogram const& jitter() const { return deviations; } // of the time between callbacks from their increment

    // The callback that modules get.
    static void advance(void* context, ticks increment); // [any thread]

  private:
    using steady = std::chrono::steady_clock;

    struct run
    {
        playback_clock* owner;
    };

    void add(run const* of, ticks increment);

    journal& log;
    bell& news;
    histogram deviations;
    mutable std::mutex mutex;
    std::deque<run> runs; // all of them, so that a late callback has something to point at
    run const* current = nullptr;
    ticks sum = 0;
    bool moved = false;
    steady::time_point first; // callback of the run
    steady::time_point last;
    ticks sum_at_first = 0;
    clock_report done; // earlier runs
};

} // namespace quillo::stand_in
