// What the host's threads leave for the hand-over thread: the picture held, blocks of sound, formats and counts.
//
// One lock, held for moments only. The host's threads never wait in here for the publisher or for a socket: a video
// call waits for the copy of the picture it takes back, a sound call for nothing.
#pragma once

#include "sender/open/pacing.h"
#include "sender/open/records.h"

#include <array>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quillo::open {

// A picture with what its message says of it.
struct held_picture
{
    picture what;
    std::int64_t timecode_100ns;
    std::int64_t sent_ns;
    std::uint64_t index;
};

class mailbox
{
  public:
    // wake is called, with the lock held, when the hand-over thread has something to do.
    explicit mailbox(std::function<void()> wake);

    // ---- the host's threads ----

    // Takes back the picture held, after which nobody reads it. Without a picture it returns at once.
    void take_back();

    // Holds a picture until it is taken back. One that another thread's video call left in between is taken back first.
    // An attentive hand-over thread gets until pick_up_by to pick it up: until then a take_back waits for that.
    void hold(picture const&, std::int64_t timecode_100ns, std::int64_t sent_ns, steady::time_point pick_up_by);

    // Whether a picture is held: only then a video call waits.
    bool holds() const;

    // Copies a block when somebody listens and there is room.
    void add(sound const&, std::int64_t timecode_100ns, std::int64_t sent_ns);

    void refuse_video(refusal, SenderVideoFrame const&);
    void refuse_audio(refusal, SenderAudioFrame const&);
    void count_video_late();
    void count_audio_late();

    // ---- the hand-over thread ----

    // Whether somebody watches and listens. When watching begins, the picture held is offered once more.
    void set_wants(bool video, bool audio);

    // Attentive: pictures are picked up within moments, so that it pays for a video call to wait for that.
    void set_attentive(bool);

    struct offer
    {
        held_picture held;
        bool repeat; // was held before anybody watched
    };
    // The picture to hand over, if there is one; it stays the host's.
    std::optional<std::size_t> offered_bytes() const;
    // From begin_copy to end_copy the picture may be read. None when there is nothing (more) to hand over, or the
    // picture has meanwhile become one that needs more than room bytes.
    std::optional<offer> begin_copy(std::size_t room);
    void end_copy();
    // There is no free slot: no video call needs to wait for the picture held now.
    void set_starved();

    // A block of sound as it goes into a message; the span is good until drop_sound.
    struct block
    {
        protocol::audio_body head;
        std::vector<std::byte> samples;
    };
    block const* first_sound() const;
    void drop_sound();

    struct formats
    {
        std::optional<protocol::video_format_body> video;
        std::optional<protocol::audio_format_body> audio;
    };
    formats current_formats() const;

    protocol::losses_body totals() const;
    // The next send wakes the hand-over thread, which has no more reports to make until then.
    void wake_on_send();
    // Lines about records refused for a reason seen for the first time.
    std::vector<std::string> first_refusals();

  private:
    enum class stage {
        fresh,   // to be handed over when wanted
        starved, // the same, but the publisher gives no slot back
        copying,
        done
    };

    void take_back(std::unique_lock<std::mutex>&);
    template <class Line>
    void note_refusal(unsigned reason, Line const&);
    void wake_if_asked();
    // Memory for the next block of the ring.
    bool make_room(std::size_t bytes) noexcept;

    std::function<void()> const wake;
    mutable std::mutex lock;
    std::condition_variable moved_on; // the stage, or the attention, changed

    // all of it guarded by lock
    std::optional<held_picture> held;
    stage held_stage = stage::done;
    steady::time_point held_pick_up_by;
    bool held_before_watching = false;
    bool attentive = false;
    bool wants_video = false;
    bool wants_audio = false;
    bool wake_asked = true;
    formats seen;
    protocol::losses_body counts{};
    std::uint64_t next_sample = 0;
    unsigned refusals_seen = 0; // a bit for each reason
    std::vector<std::string> refusal_lines;

    std::array<block, 32> ring; // a third of a second in blocks of 10 ms
    std::size_t ring_first = 0;
    std::size_t ring_count = 0;
};

} // namespace quillo::open
