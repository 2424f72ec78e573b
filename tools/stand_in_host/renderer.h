// Draws the frames of a plan ahead of time, on a thread of its own.
#pragma once

#include "tools/stand_in_host/bell.h"
#include "tools/stand_in_host/frame_ledger.h"
#include "tools/stand_in_host/playback_plan.h"
#include "tools/stand_in_host/source.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace quillo::stand_in {

struct rendered_frame
{
    std::int64_t push;   // place in the plan
    std::int64_t number; // place on the time line
    std::unique_ptr<host_frame> frame;
};

// All functions are the player's thread's. The bell is rung when a frame is ready or the plan has ended.
class renderer
{
  public:
    // source, frames and news outlive this.
    renderer(source& from, pixel_layout layout, frame_ledger& frames, bell& news);
    renderer(renderer const&) = delete;
    renderer& operator=(renderer const&) = delete;
    ~renderer();

    // Begins a plan; what was drawn for another one is dropped.
    void start(playback_plan const& plan);
    void stop();

    // One frame, drawn while the caller waits; none where the clip has no such frame. Not while a plan runs.
    std::unique_ptr<host_frame> still(std::int64_t number);

    // The oldest frame ready, but not older than needed: where a later one up to newest is ready, earlier ones are
    // dropped. Throws what the source threw.
    std::optional<rendered_frame> take(std::int64_t oldest_wanted, std::int64_t newest);

    bool is_ready() const; // whether take may find something, or would throw

    // The push after the plan's last one, once known.
    std::optional<std::int64_t> end() const;

  private:
    void work();
    std::unique_ptr<host_frame> draw(std::int64_t number);
    bool has_room() const;
    void drop_all();
    void end_at(std::int64_t push);

    source& from;
    pixel_layout layout;
    frame_ledger& frames;
    bell& news;
    std::size_t depth; // frames drawn ahead

    mutable std::mutex mutex;
    std::condition_variable changed;
    bool quit = false;
    bool running = false;
    bool drawing = false;
    unsigned long generation = 0;
    playback_plan plan;
    std::int64_t next = 0;   // push to draw
    std::int64_t wanted = 0; // pushes before this one come too late
    std::optional<std::int64_t> ended;
    std::deque<rendered_frame> ready;
    std::exception_ptr failure;
    std::thread thread;
};

} // namespace quillo::stand_in
