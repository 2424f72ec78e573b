// One watching receiver, a process of its own: GStreamer's rtspsrc into an application, as a player would.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace quillo::bench {

struct reception
{
    bool raw;
    bool compare; // every byte of raw pictures; takes as much of the machine again as a large picture's way to here
};

// Watches url for so many seconds after its first picture and gives what it saw: frames, lost, different (null where
// nothing was compared), latency in ms from the send call to the picture in the application, and when, in seconds,
// pictures were lost.
nlohmann::json receive(std::string const& url, reception what, int width, int height, double seconds);

// Only counts what comes, by its packets' time stamps, and needs little of the machine. Frames that the host left out
// count as lost.
nlohmann::json count(std::string const& url, int rate, double seconds);

} // namespace quillo::bench
