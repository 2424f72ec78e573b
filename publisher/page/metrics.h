// The status as Prometheus takes it in.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace quillo::publisher {

constexpr char const* metrics_type = "text/plain; version=0.0.4; charset=utf-8";

// From what status_json() says. Base units; counters end in _total.
std::string metrics_text(nlohmann::json const& status);

} // namespace quillo::publisher
