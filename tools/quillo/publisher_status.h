// What the publisher of this user says about itself.
#pragma once

#include "sender/open/runtime_folder.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace quillo {

// None where no publisher answers in time.
std::optional<nlohmann::json> publisher_status(std::chrono::milliseconds at_most,
                                               std::string const& folder = open::runtime_folder());

struct published_source
{
    std::string name;
    std::string url;
    int receivers = 0;
};

// The sources that a process feeds.
std::vector<published_source> sources_of(nlohmann::json const& status, int pid);

} // namespace quillo
