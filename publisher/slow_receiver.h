// Notices that a receiver cannot take all that is meant for it, and finds words for why and what can be done.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace quillo::publisher {

// What has gone to a receiver since it came. Times are the kernel's, about its TCP connection.
struct delivery
{
    std::chrono::steady_clock::time_point at;
    std::uint64_t pictures;          // handed to the connection
    std::uint64_t dropped;           // for want of room
    std::uint64_t acknowledged;      // bytes
    std::chrono::microseconds busy;  // with data to send
    std::chrono::microseconds waits; // of that, for the receiver to read
};

class slow_receiver
{
  public:
    static constexpr std::chrono::seconds looks_back{5};
    static constexpr std::chrono::seconds says_again_after{30};
    static constexpr int percent = 2; // of the pictures lost, in that time, is slow

    // To be called about once a second. Cause and remedy when it is time to say so.
    std::optional<std::string> look(delivery const& now, bool compressed);

  private:
    std::optional<delivery> before_;
    std::optional<std::chrono::steady_clock::time_point> said_;
};

} // namespace quillo::publisher
