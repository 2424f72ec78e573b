// The files of the page, built into the program.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillo::publisher {

struct embedded_file
{
    std::string_view name;
    std::string_view content;
};
std::vector<embedded_file> const& embedded_files();

struct asset
{
    char const* type;
    std::string_view content;
};

// By path; "/" is the page itself. Null where there is none.
asset const* find_asset(std::string_view path);

} // namespace quillo::publisher
