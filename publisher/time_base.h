// Where the pictures and the sound of one source stand on the common clock (CLOCK_MONOTONIC, ns).
//
// The host's timecodes tell how far two items are apart, their arrival tells when "now" is. One anchor (a timecode and
// its time) serves both streams, so that they stay in step; it holds while the distance in timecode and the distance in
// arrival agree within 150 ms. A seek, a loop or a pause breaks that, and the item that shows it becomes the new anchor
// for both. When anchors keep breaking (scrubbing, other speeds, streams whose timecodes do not belong together) items
// are placed by their arrival alone for a while.
//
// While sound runs it alone moves the anchor: its arrival is when it was due, to the microsecond, where a picture's has
// the load of the machine in it. A host that was held up for a tenth of a second goes on that much later from then on,
// and sound that is twice late by the same says so. Were its stamps left behind, receivers would find out by
// themselves, of each stream at another speed, and show the one apart from the other meanwhile.
//
// Times of a stream always rise. No I/O, no clock of its own, no lock: one thread at a time.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace quillo::publisher {

class time_base
{
  public:
    using ns = std::int64_t;

    static constexpr ns tolerance = 150'000'000;     // between timecode and arrival
    static constexpr ns move = 10'000'000;           // by which two blocks have to be off
    static constexpr ns same_move = 2'000'000;       // between the two
    static constexpr ns sound_runs = 1'000'000'000;  // for so long after a block with a timecode
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
    // How far behind the anchor's idea of it one stream's items come.
    class lateness
    {
      public:
        bool known() const { return usual_.has_value(); }
        ns usual() const { return usual_.value_or(0); }
        void forget() { usual_.reset(); }
        void take(ns late) { usual_ = late; }
        void follow(ns late) { usual_ = usual_ ? *usual_ + (late - *usual_) / 16 : late; }

      private:
        std::optional<ns> usual_;
    };

    std::optional<ns> by_timecode(std::int64_t timecode_100ns) const;
    ns place_picture(std::int64_t timecode_100ns, ns arrival);
    ns place_sound(std::int64_t timecode_100ns, ns arrival);
    ns anchor(std::int64_t timecode_100ns, ns arrival, lateness& of);
    block append(ns wanted, int samples, int rate);

    bool anchored_ = false;
    std::int64_t anchor_timecode_ = 0;
    ns anchor_time_ = 0;
    std::uint64_t anchors_ = 0;
    std::array<ns, flap_count> recent_{}; // arrivals of the last anchors, newest first
    ns free_until_ = INT64_MIN;

    lateness pictures_;
    lateness sound_;
    std::optional<ns> last_sound_;     // arrival of the last block with a timecode
    std::optional<ns> suspected_move_; // what the block before was off by

    bool any_picture_ = false;
    ns last_picture_ = 0;

    // Sound is counted in samples from the last break, so that rounding never adds up.
    ns run_start_ = 0;
    std::int64_t run_samples_ = 0;
    int run_rate_ = 0;
};

} // namespace quillo::publisher
