// Encoded items that a machine which stood still has made stale.
//
// A receiver that keeps so much in hand takes one item that comes later than that for a pause of the server, begins to
// count this stream anew with it, and shows sound and picture apart until the next sender report. So what a long stall
// left in an encoder is better not sent, and all of it up to what is nearly on time: a gap of a few packets in the
// sound a player would not notice, and play the rest too early. An encoder that is always slow is another matter: only
// what comes later than usual is stale, and not for long, or a machine that has become slower would show nothing any
// more.
#pragma once

#include <chrono>
#include <optional>

namespace quillo::publisher {

class stale_items
{
  public:
    // Later than usual: less than the 200 ms that receivers keep in hand at least.
    static constexpr std::chrono::milliseconds too_late{180};
    static constexpr std::chrono::milliseconds good_again{100};
    static constexpr std::chrono::milliseconds longest{500};     // that nothing is good
    static constexpr std::chrono::milliseconds remembered{1000}; // at least, and twice that at most

    // late: now less the item's own time. Asked of each item of one encoder in turn.
    bool is_stale(std::chrono::nanoseconds late, std::chrono::nanoseconds now);

  private:
    void remember(std::chrono::nanoseconds late, std::chrono::nanoseconds now);

    // The least lateness of good items, of this span of time and of the one before: receivers go by that, too.
    std::optional<std::chrono::nanoseconds> least_;
    std::optional<std::chrono::nanoseconds> least_before_;
    std::chrono::nanoseconds span_began_{};
    std::optional<std::chrono::nanoseconds> stale_since_;
};

} // namespace quillo::publisher
