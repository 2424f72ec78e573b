// Why an input cannot be played.
#pragma once

#include <stdexcept>
#include <string>

namespace quillo::stand_in {

// what() is one line that names the input.
class input_error : public std::runtime_error
{
  public:
    enum class reason { unreadable, no_video };

    input_error(reason why_, std::string const& message) : std::runtime_error(message), why(why_) {}

    reason why;
};

} // namespace quillo::stand_in
