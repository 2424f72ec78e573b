// Plays one clip through an instance of a plug-in: the transport of a host.
#pragma once

#include "tools/stand_in_host/audio_output.h"
#include "tools/stand_in_host/bell.h"
#include "tools/stand_in_host/media/input_error.h"
#include "tools/stand_in_host/playback_clock.h"
#include "tools/stand_in_host/renderer.h"
#include "tools/stand_in_host/statistics.h"
#include "tools/stand_in_host/transmitter.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace quillo::stand_in {

struct player_settings
{
    std::optional<pixel_layout> only; // the one layout to negotiate; none: the plug-in's first choice
    bool audio = true;
    bool loop = false;
    std::optional<double> in_s;
    std::optional<double> out_s;
    double speed = 1;   // not 0
    bool scrub = false; // to and fro over the range, every frame as soon as it is drawn
    std::optional<std::int64_t> push_limit;
    std::chrono::milliseconds clock_patience{5000}; // a module's clock that stands longer while it plays has failed
};

struct command
{
    enum kind {
        toggle,
        pause,
        play,
        step,  // value: frames, negative backwards; pauses
        seek,  // value: seconds
        speed, // value: not 0
        quit
    };

    kind what;
    double value = 0;
};

struct progress
{
    double position_s = 0;
    bool paused = false;
    long pushed = 0;
    long late = 0;
    long dropped = 0;
    double drift_ms = 0;
};

enum class outcome {
    ended,
    quit,
    reset // the plug-in asked to be started anew
};

// Only the thread in run calls the module; run returns when nothing of the clip is with the module any more.
class player
{
  public:
    player(transmitter& plug_in, host_state& state, source& clip, player_settings const& settings, statistics& figures);

    // Called some ten times a second on run's thread.
    std::function<void(progress const&)> on_progress;

    // Throws module_failure and input_error.
    outcome run();

    // [any thread]
    void post(command c);

  private:
    void set_range();
    void start(std::int64_t first, double speed);
    void halt();
    void show_still(std::int64_t number);
    void push(rendered_frame r);
    void push_what_is_due();
    bool has_ended();
    void obey(command const& c);
    void obey_all();
    void seek(std::int64_t number);
    void tick();
    std::int64_t frame_now() const;
    progress report() const;
    void note_figures();

    transmitter& plug_in;
    host_state& state;
    source& clip;
    player_settings settings;
    statistics& figures;

    bell news;
    playback_clock clock;
    std::unique_ptr<audio_output> sound;
    std::unique_ptr<renderer> pictures;
    std::unique_ptr<transmit_instance> instance;

    playback_plan plan; // of the current run or, halted, of the last one
    bool playing = false;
    std::int64_t next_push = 0;
    std::int64_t shown = 0; // the frame that was pushed last
    std::optional<std::int64_t> pushes_left;
    std::optional<outcome> done;
    std::chrono::steady_clock::time_point last_tick;
    int ticks_since_reset_check = 0;

    std::mutex mutex;
    std::deque<command> commands; // guarded by mutex
};

} // namespace quillo::stand_in
