// The sound of one player as the module pulls it: read ahead, at the plan's speed, block by block.
#pragma once

#include "tools/stand_in_host/journal.h"
#include "tools/stand_in_host/playback_plan.h"
#include "tools/stand_in_host/source.h"

#include "host/adapter.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quillo::stand_in {

struct audio_counts
{
    long blocks = 0;    // delivered
    long underruns = 0; // not there in time
    long refused = 0;   // asked for out of order
};

// Between prepare and cease a thread of its own reads ahead. What the module calls answers in the order set up, start,
// buffers, stop; anything else is refused and a breach.
class audio_output
{
  public:
    // The source must have sound and outlive this.
    audio_output(source& from, journal& log);
    audio_output(audio_output const&) = delete;
    audio_output& operator=(audio_output const&) = delete;
    ~audio_output();

    int channels() const { return static_cast<int>(output_channels); } // at least 2, as modules provide

    // [player's thread] Begins to read for a run. The module may take sound from now on, until cease.
    void prepare(playback_plan const& plan);
    void cease();

    // [module's thread]
    prSuiteError set_up(bool scrubbing, host::audio_settings const& settings);
    prSuiteError start(host::audio_range const& range, float speed);
    prSuiteError pull(float* const* buffers, unsigned count, PrTime* time);
    prSuiteError stop();

    audio_counts counts() const;

    // Why the source could not be read on; empty while it can. Sound is silent from then on.
    std::string failure() const;

  private:
    struct piece
    {
        ticks time; // of the first sample
        double ticks_per_sample;
        std::size_t used = 0;
        std::vector<std::vector<float>> samples; // a channel each
    };

    enum class state { idle, ready, started };

    void read_ahead();
    piece next_piece(playback_plan const& run, std::int64_t& position);
    piece read_piece(ticks place, double speed, int count);
    prSuiteError refuse(unsigned error, char const* what);
    std::size_t consume(std::size_t count, float* const* buffers);

    source& from;
    journal& log;
    audio_description format;
    std::size_t output_channels;

    mutable std::mutex mutex;
    std::condition_variable changed;
    state now = state::idle;
    bool active = false; // between prepare and cease
    bool quit = false;
    unsigned long generation = 0; // of the plan
    playback_plan plan;
    std::deque<playback_plan> given; // since cease; the module may still be about to use an earlier one than plan
    std::deque<piece> pieces;
    std::size_t buffered = 0; // samples
    std::size_t debt = 0;     // samples to leave out, for as many that came too late
    std::string failed;
    audio_counts totals;
    std::thread reader;
};

} // namespace quillo::stand_in
