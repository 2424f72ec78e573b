// Notices that the way to a receiver is not as it was, or that what goes to it stood still. What is under way in sound
// and in pictures then takes longer or shorter, each for itself, and a receiver that smooths arrival times sets them
// apart for a while.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace quillo::publisher {

class network_change
{
  public:
    using time_point = std::chrono::steady_clock::time_point;

    enum class lately {
        settled,
        changed,  // a receiver may need to be told how sound and pictures belong together
        caught_up // much that waited came at once: a receiver that smooths it follows for seconds, each for itself
    };

    static constexpr std::chrono::milliseconds counts{10}; // of the time to the receiver and back
    static constexpr std::chrono::milliseconds is_much{100};
    static constexpr std::chrono::seconds settles_after{15};
    static constexpr std::chrono::seconds smoothed_after{5};

    // To be called about once a second, with all pictures ever dropped for it. The round trip is left out where only a
    // busy machine changes it.
    lately look(time_point now, std::uint64_t dropped, std::optional<std::chrono::microseconds> round_trip);

    void stood_still(time_point now) { last_ = now; }

  private:
    std::uint64_t dropped_ = 0;
    std::optional<std::chrono::microseconds> round_trip_;
    std::optional<time_point> last_;
    std::optional<time_point> caught_up_;
};

} // namespace quillo::publisher
