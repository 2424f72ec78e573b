// The host's frames: their memory, the handles under which they are given out, and whether each handle comes back once.
#pragma once

#include "tools/stand_in_host/journal.h"
#include "tools/stand_in_host/source.h"

#include "host/adapter.h"

#include <cstdlib>
#include <deque>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace quillo::stand_in {

// A frame of the host as plug-ins see it: the bottom row first in memory, rows padded, 16-byte aligned.
class host_frame
{
  public:
    // row_padding: bytes behind each row on top of what alignment asks for, a multiple of 16.
    host_frame(video_description const& video, pixel_layout layout, int row_padding);

    picture_view view();
    PPix* pix() { return &record; }
    PrPixelFormat format() const;
    bool fits(video_description const& video, pixel_layout layout) const;

    csSDK_uint32 aspect_n;
    csSDK_uint32 aspect_d;
    csSDK_int32 render_ms = 0;
    csSDK_uint64 key = 0; // differs from picture to picture

  private:
    struct release
    {
        void operator()(unsigned char* bytes) const { std::free(bytes); }
    };

    PPix record{};
    pixel_layout layout;
    std::unique_ptr<unsigned char, release> memory;
    std::uint64_t note = 0;
};

PrPixelFormat format_code(pixel_layout layout);

struct frame_counts
{
    long issued = 0;   // handles given to the module
    long disposed = 0; // given back
    long outstanding() const { return issued - disposed; }
};

// All functions may be called by any thread.
class frame_ledger
{
  public:
    explicit frame_ledger(journal& log_, int row_padding_ = 0) : log(log_), row_padding(row_padding_) {}

    // A frame to draw into, from those that came back where one fits.
    std::unique_ptr<host_frame> take(video_description const& video, pixel_layout layout);
    void give_back(std::unique_ptr<host_frame> frame);

    // A handle for the module, which owes one disposal from now on.
    PPixHand issue(std::unique_ptr<host_frame> frame);

    // The frame behind a handle; null, and a breach, for one that is not with the module.
    host_frame* find(PPixHand handle, char const* asked_by);
    bool dispose(PPixHand handle);

    frame_counts counts() const;

  private:
    struct ticket
    {
        PPix* pix = nullptr; // a handle is the address of this
        std::unique_ptr<host_frame> frame;
    };

    ticket* find_locked(PPixHand handle, char const* asked_by);
    void keep(std::unique_ptr<host_frame> frame);

    journal& log;
    int row_padding;
    mutable std::mutex mutex;
    frame_counts totals;
    std::vector<std::unique_ptr<host_frame>> idle;
    std::unordered_map<PPixHand, std::unique_ptr<ticket>> tickets;
    std::deque<PPixHand> returned; // handles rest here for a while, so that a second disposal is known for what it is
};

} // namespace quillo::stand_in
