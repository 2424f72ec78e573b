// How late the pictures and the sound of a source come, as smoothed figures for the status. No lock, one thread.
#pragma once

#include <cstdint>
#include <optional>

namespace quillo::publisher {

class stream_offsets
{
  public:
    using ns = std::int64_t;

    // sent: when the sender had it due; placed: where its timecode put it; now: when it could go out. All by the clock.
    void picture(ns sent, ns placed, ns now)
    {
        hand_over_.add(now - sent);
        picture_.add(sent - placed);
    }
    void sound(ns sent, ns placed) { sound_.add(sent - placed); }
    void reset() { *this = {}; }

    // From the host's send call to the publisher's own copy.
    std::optional<double> hand_over_ms() const { return hand_over_.ms(); }

    // Above zero: pictures come later than the sound of the same timecode.
    std::optional<double> av_ms() const
    {
        if (!picture_.known || !sound_.known)
            return std::nullopt;
        return *picture_.ms() - *sound_.ms();
    }

  private:
    struct smoothed
    {
        bool known = false;
        double value_ns = 0;

        void add(ns next)
        {
            value_ns += (static_cast<double>(next) - value_ns) / (known ? 32 : 1);
            known = true;
        }
        std::optional<double> ms() const { return known ? std::optional{value_ns / 1e6} : std::nullopt; }
    };

    smoothed hand_over_;
    smoothed picture_;
    smoothed sound_;
};

} // namespace quillo::publisher
