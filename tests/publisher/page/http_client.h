// An HTTP client that does as it is told, well or badly.
#pragma once

#include "sender/open/descriptor.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quillo::testing {

using namespace std::chrono_literals;

struct http_response
{
    int status = 0;
    std::map<std::string, std::string> headers; // names in lower case
    std::string body;
};

class http_client
{
  public:
    // receive_buffer in bytes, 0 leaves it to the system.
    explicit http_client(int port, char const* address = "127.0.0.1", int receive_buffer = 0);

    // False: the server has closed.
    bool send(std::string_view bytes);

    // Until the server closes or has said so many bytes, whichever is first. What came in time.
    std::string receive(std::size_t at_most = 1 << 20, std::chrono::milliseconds limit = 5s);

    // The server closed, in order or not, and said nothing before.
    bool closes_silently(std::chrono::milliseconds limit = 5s);

    int fd() const { return socket_.get(); }

  private:
    open::descriptor socket_;
};

// A whole request with what a browser adds, and its answer.
http_response get(int port, std::string const& path, std::string const& more_headers = {},
                  std::string const& method = "GET", std::string const& host = {});
http_response parse_response(std::string const& text);

} // namespace quillo::testing
