// When frames and blocks are due. No clock and no waiting in here: times come in and go out.
#pragma once

#include <chrono>
#include <cstdint>

namespace quillo::open {

// The clock that the publisher reads too.
using steady = std::chrono::steady_clock;

// A point of time that moves on in fractions of a second, without rounding errors that add up.
class timeline
{
  public:
    // per_second must be positive.
    void start(steady::time_point at, std::int64_t per_second);
    // units / per_second seconds further; units from 0 to 2^32.
    void advance(std::int64_t units);
    void move_earlier(steady::duration by) { whole -= by; }
    steady::time_point at() const;

  private:
    steady::time_point whole; // the last full second since the start
    std::int64_t units = 0;   // beyond it, less than per_second
    std::int64_t per_second = 1;
};

// Sound: one block follows the other without a gap.
class audio_clock
{
  public:
    struct block
    {
        steady::time_point begin; // the first sample is due
        steady::time_point end;   // the sample behind the last is due: the call returns
        bool late;                // a new start was made because the host came too late
    };

    // A block given at now. A changed rate makes a new start, and so does being late by more than 100 ms: lost time is
    // not made up for by a burst of blocks. rate and samples must be positive.
    block next(steady::time_point now, int rate, int samples);

  private:
    timeline line;
    int current_rate = 0;
};

// Pictures: sending returns at once, and the call after it waits until the frame before was due.
class video_clock
{
  public:
    // A frame given at now, n / d frames a second, both positive. True: the host came more than two periods late, and
    // the clock made a new start. A changed rate makes one too.
    bool frame(steady::time_point now, std::int32_t n, std::int32_t d);

    // Until when a call at now waits for the last frame's due time: at most one period, and never more than a second.
    // A host that takes time of its own between two calls keeps time by itself, and if it comes early, the frame with
    // which this clock started was late: then the clock moves, by two periods at once and one more in 256 frames,
    // instead of holding up every call.
    steady::time_point wait_until(steady::time_point now);

    // One frame, but at most a second.
    steady::duration period() const;

  private:
    void start(steady::time_point at);

    timeline line;
    std::int32_t rate_n = 0;
    std::int32_t rate_d = 0;
    steady::time_point last_frame;
    steady::duration may_move{};
};

} // namespace quillo::open
