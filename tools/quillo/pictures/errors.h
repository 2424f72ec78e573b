// What can go wrong with a request, told apart by whose mistake it is.
#pragma once

#include <stdexcept>

namespace quillo::pictures {

// The request names something that does not exist; the message lists what does.
struct request_error : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// The input file is not what the request says.
struct input_error : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

} // namespace quillo::pictures
