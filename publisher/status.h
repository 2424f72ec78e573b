// What a local program gets to know about the publisher.
#pragma once

#include "publisher/receivers.h"
#include "publisher/source.h"

#include <memory>
#include <string>
#include <vector>

namespace quillo::publisher {

// JSON text. base is the address of the RTSP server without a path.
std::string status_json(std::vector<std::shared_ptr<source>> const& sources, std::vector<receiver_ptr> const& watching,
                        std::string const& base);

} // namespace quillo::publisher
