// What the host's threads leave for the hand-over thread: the picture held, blocks of sound, formats and counts.
//
// One lock, held for moments only. The host's threads never wait in here for the publisher or for a socket, nor for the
// hand-over thread to get its turn: a video call that takes a picture back makes its copy if nobody has begun it, and
// helps with one that is under way; a sound call waits for nothing.
#pragma once

#include "sender/open/pacing.h"
#include "sender/open/records.h"
#include "sender/open/shared_copy.h"
#include "sender/open/slot_pool.h"

#include <array>
#include <condition_variable>
#include <functional>
#include <memory>
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
    void hold(picture const&, std::int64_t timecode_100ns, std::int64_t sent_ns);

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

    // Where pictures are copied to; null: nowhere. Copies in the pool before are dropped.
    void set_pool(std::shared_ptr<slot_pool>);
    void give_back(std::uint32_t slot);

    // How large the picture is that waits to be copied, if there is one.
    std::optional<std::size_t> waiting_bytes() const;
    // Copies it, unless a video call does. It goes on waiting when there is no slot.
    void copy_waiting();

    struct copied
    {
        held_picture held;
        bool repeat; // was held before anybody watched
        std::uint32_t slot;
    };
    // The oldest copy of which the publisher is to be told.
    std::optional<copied> next_copied();

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
    struct running_copy
    {
        running_copy(copied const& copy, std::shared_ptr<slot_pool> slots)
            : made(copy), into(std::move(slots)), work(made.held.what, into->slot(made.slot))
        {
        }
        copied const made;
        std::shared_ptr<slot_pool> const into; // the mailbox may get another one meanwhile
        shared_copy work;
        int workers = 0;
    };

    void take_back(std::unique_lock<std::mutex>&);
    bool begin_copy();                        // false: there is nothing to copy, or nowhere
    bool help(std::unique_lock<std::mutex>&); // with the copy that is under way; true: this call ended it
    template <class Line>
    void note_refusal(unsigned reason, Line const&);
    void wake_if_asked();
    // Memory for the next block of the ring.
    bool make_room(std::size_t bytes) noexcept;

    std::function<void()> const wake;
    mutable std::mutex lock;
    std::condition_variable copy_ended;

    // all of it guarded by lock
    std::optional<held_picture> held;
    bool to_copy = false;                // the picture held, when wanted
    std::optional<running_copy> running; // of the picture held
    bool held_before_watching = false;
    std::shared_ptr<slot_pool> pool;
    std::array<std::optional<copied>, slot_pool::slots> copies; // by slot
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
