// The path of a source: "Adobe Premiere Pro" is at adobe-premiere-pro.
#pragma once

#include <string>
#include <string_view>

namespace quillo::publisher {

// Lower-case letters, digits and single dashes, at most 60 of them; "source" where nothing else is left.
std::string slug(std::string_view name);

// Valid UTF-8 without control characters, at most max_bytes, cut between characters.
std::string clean_name(std::string_view name, std::size_t max_bytes);

} // namespace quillo::publisher
