// A receiver made of nothing but a socket: asks what it is told to, reads only when it is told to.
#pragma once

#include "sender/open/descriptor.h"

#include <chrono>
#include <string>

namespace quillo::testing {

using namespace std::chrono_literals;

class rtsp_socket
{
  public:
    explicit rtsp_socket(int port, char const* from = "127.0.0.1"); // of 127.0.0.1

    // Sends a request and reads the answer, empty when none comes. Headers end with "\r\n" each.
    std::string ask(std::string const& method, std::string const& url, std::string const& headers = {});

    // DESCRIBE, SETUP of every media, or only of the first ones, over this connection, and PLAY. False when one is
    // refused.
    bool play(std::string const& url, int streams = 9);

    bool send(std::string const& bytes);
    bool ended_by_peer(std::chrono::milliseconds limit = 5s); // reads on
    // At most so fast. What the publisher's kernel has taken comes even when the publisher has ended it.
    void read_slowly(std::size_t bytes_a_second, std::chrono::milliseconds during);

  private:
    open::descriptor socket_;
    int sequence_ = 0;
};

} // namespace quillo::testing
