// Where the pictures and the sound of one source stand on the common clock (CLOCK_MONOTONIC, ns).
//
// The host's timecodes tell how far two items are apart, their arrival tells when "now" is. One anchor (a timecode and
// its time) serves both streams, so that they stay in step; it holds while the distance in timecode and the distance in
// arrival agree within 150 ms. A seek, a loop or a pause breaks that, and the item that shows it becomes the new anchor
// for both. When anchors keep breaking (scrubbing, other speeds, streams whose timecodes do not belong together) items
// are placed by their arrival alone for a while.
//
// Times of a stream always rise. No I/O, no clock of its own, no lock: one thread at a time.
#pragma once

#include <array>
#include <cstdint>

namespace quillo::publisher {

class time_base
{
  public:
    using ns = std::int64_t;

    static constexpr ns tolerance = 150'000'000;     // between timecode and arrival
    static constexpr ns smallest_step = 1'000'000;   // between two pictures
    static constexpr ns sound_snap = 5'000'000;      // a block this near to the end of the one before follows it
    static constexpr ns flap_window = 1'000'000'000; // this many anchors within the window are too many
    static constexpr int flap_count = 8;
    static constexpr ns free_time = 2'000'000'000; // placed by arrival

    ns picture(std::int64_t timecode_100ns, ns arrival);

    // The held picture again; it has no timecode of its own.
    ns repeated_picture(ns now);

    struct block
    {
        ns start;
        bool follows; // the block before without a gap
        bool late;    // its time is filled already: to be dropped, start means nothing
    };
    block sound(std::int64_t timecode_100ns, ns arrival, int samples, int rate);

    // A block without timecode: silence, or a stand-in for sound that does not come.
    block untimed_sound(ns arrival, int samples, int rate);

    // End of the last block; 0 before the first.
    ns sound_end() const;

    // Anchors taken so far; the first one counts.
    std::uint64_t anchors() const { return anchors_; }

  private:
    ns place(std::int64_t timecode_100ns, ns arrival);
    void anchor(std::int64_t timecode_100ns, ns arrival);
    block append(ns wanted, int samples, int rate);

    bool anchored_ = false;
    std::int64_t anchor_timecode_ = 0;
    ns anchor_time_ = 0;
    std::uint64_t anchors_ = 0;
    std::array<ns, flap_count> recent_{}; // arrivals of the last anchors, newest first
    ns free_until_ = INT64_MIN;

    bool any_picture_ = false;
    ns last_picture_ = 0;

    // Sound is counted in samples from the last break, so that rounding never adds up.
    ns run_start_ = 0;
    std::int64_t run_samples_ = 0;
    int run_rate_ = 0;
};

} // namespace quillo::publisher
