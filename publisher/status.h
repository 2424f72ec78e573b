// What a local program gets to know about the publisher.
#pragma once

#include "publisher/doors/doors.h"
#include "publisher/encoded_feed.h"
#include "publisher/receivers.h"
#include "publisher/source.h"

#include <map>
#include <string>
#include <vector>

namespace quillo::publisher {

struct source_report
{
    source const* of;
    encoder_losses encoder_late;
};

// JSON text. urls are the addresses of the servers without a path, "rtsp" among them; mounts stand
// behind the paths of all sources.
std::string status_json(std::vector<source_report> const& sources, receivers const& watching,
                        std::map<std::string, std::string> const& urls, std::vector<std::string> const& mounts,
                        door_counts const& turned_away);

} // namespace quillo::publisher
