// The host applications that the stand-in host can present itself as.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace quillo::stand_in {

struct host_application
{
    std::string_view key;  // on the command line
    std::string_view name; // in full
    std::uint32_t code;    // its first character in the highest byte
};

std::span<host_application const> host_applications();
std::optional<host_application> find_host_application(std::string_view key);

} // namespace quillo::stand_in
