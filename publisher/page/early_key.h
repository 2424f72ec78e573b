#pragma once

#include <thread>

namespace quillo::publisher {

// All encrypted transports (DTLS) of a process share a key, which GStreamer makes when the first browser comes to
// watch: up to a second of work. Made here, beside everything else, nobody waits for it but its own end.
class early_key
{
  public:
    early_key();
    ~early_key();

  private:
    std::thread thread_;
};

} // namespace quillo::publisher
