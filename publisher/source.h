// One live source: what its sender announced, its time base, its last picture, and who listens.
#pragma once

#include "publisher/channel.h"
#include "publisher/formats.h"
#include "publisher/listener.h"
#include "publisher/picture_store.h"
#include "publisher/stream_offsets.h"
#include "publisher/time_base.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quillo::publisher {

class source : public channel_events
{
  public:
    using ns = std::int64_t;

    static constexpr ns repeat_after = 200'000'000;       // the last picture again, while the host rests
    static constexpr ns resting_after = 60'000'000;       // no picture for so long
    static constexpr ns fill_sound_after = 60'000'000;    // silence instead of sound that does not come
    static constexpr ns stood_still_after = 50'000'000;   // without a tick: the machine did, and the host with it
    static constexpr ns longest_filled_gap = 150'000'000; // of one between two blocks
    static constexpr ns black_after = 200'000'000;        // when the sender has no picture for a new listener
    static constexpr ns overdue_after = 1'000'000'000;    // likewise, when it has one and does not hand it over
    static constexpr int frames_to_accept = 3;            // in a new format, before it is announced
    static constexpr ns pending_limit = 500'000'000;      // or this long as the last word

    // Name as the sender gave it, path without a leading slash. wake makes the connection's thread look at wants().
    source(introduction who, std::string path, std::function<void()> wake);

    introduction who() const; // the sender that has it, or had it last
    std::string const& path() const { return path_; }

    // From the connection's thread.
    void video_format(protocol::video_format_body const& format) override;
    void audio_format(sound_format const& format) override;
    void video(video_item const& item) override;
    void audio(audio_item const& item) override;
    void losses(protocol::losses_body const& losses) override;

    // Fills the time while the host rests. To be called often while anybody listens, from the connection's thread.
    void tick(ns now);

    // The sender has gone, and another one may follow: from here on there are a slate and silence, for those who stay.
    // To be ticked as before.
    void go_away();
    // A sender has it from now on, and its connection is woken instead.
    void come_back(introduction who, std::function<void()> wake);
    bool is_away() const { return away_; }
    // How many senders it has had.
    unsigned senders() const { return senders_; }

    // The sender has gone: ends all listeners, and those who still come.
    void close();

    // From any thread.
    bool wanted() const { return watched_ != nobody; }
    // A new number whenever somebody comes where nobody was: of what the source had to show nothing is left then.
    static constexpr unsigned nobody = 0;
    unsigned watched() const { return watched_; }
    void add(listener& who);    // told the format and given the last picture before this returns, if there is one
    void remove(listener& who); // not called any more once this has returned
    void hurry();               // while the host rests: the last picture again at once, for somebody who waits for it

    void set_network_name(std::string const& name);

    struct state
    {
        std::string network_name; // empty: not announced, or not yet
        picture_format pictures;
        sound_format sound;
        bool away;
        bool announced; // by the sender; else these are the shapes to begin with
        std::uint32_t fourcc;
        float aspect;
        int frame_format;
        std::uint64_t pictures_in;
        std::uint64_t blocks_in;
        std::uint64_t anchors;
        std::uint64_t sound_breaks;     // silence stood before the host's sound went on: a rest, a seek, a stall
        std::uint64_t blocks_displaced; // silence had their time already
        protocol::losses_body losses;
        stream_offsets offsets; // while anybody listens
    };
    state current() const;

  private:
    void accept(picture_format const& format);
    void consider(picture_format const& shape, ns now);
    void show(buffer_ptr picture, buffer_ptr alpha, ns time);
    void show_black(ns now);
    void show_slate(ns now);
    void wake() const;
    void repeat(ns now);
    bool fill_sound(ns from);      // false: that time is filled already
    bool fill_gap(ns from, ns to); // false: there is none, or it stays one
    void begin_sound(ns now);
    void give(placed_sound const& block);
    ns arrival(std::int64_t sent_ns) const;

    std::string const path_;
    std::atomic<bool> away_{false};
    std::atomic<unsigned> senders_{1};

    mutable std::mutex mutex_; // of everything below
    introduction who_;
    std::function<void()> wake_;
    std::vector<listener*> listeners_;
    std::atomic<unsigned> watched_{nobody};
    unsigned times_watched_ = 0;

    picture_format pictures_;
    sound_format sound_;
    bool sound_announced_ = false;
    bool closed_ = false;
    std::string network_name_;
    std::optional<protocol::video_format_body> announced_;
    std::optional<picture_format> pending_; // another shape, seen in the last frames
    int pending_frames_ = 0;
    ns pending_since_ = 0;

    time_base time_;
    picture_store store_;
    buffer_ptr last_;       // shown last, in the announced shape
    buffer_ptr last_alpha_; // null: opaque
    bool last_is_filler_ = false;
    ns last_shown_ = 0;        // by the clock
    bool sound_rests_ = false; // silence has taken its place until sound comes again
    enum class before { nothing, sound, silence } before_ = before::nothing; // what listeners heard last, of the host's
    ns listened_since_ = 0;
    ns last_block_ = 0; // when the sender's last sound came
    ns last_tick_ = 0;
    ns awake_since_ = 0; // after the machine stood still

    std::uint64_t pictures_in_ = 0;
    std::uint64_t blocks_in_ = 0;
    std::uint64_t sound_breaks_ = 0;
    std::uint64_t blocks_displaced_ = 0;
    protocol::losses_body losses_{};
    stream_offsets offsets_;
};

// Now on the common clock: CLOCK_MONOTONIC in ns.
std::int64_t monotonic_ns();

} // namespace quillo::publisher
