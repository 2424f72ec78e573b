// Adapters between the macOS C library's interface and this system's, in tables by symbol.
#pragma once

#include <span>
#include <string_view>

namespace quillo::macho {

struct adapter
{
    std::string_view symbol; // with its leading underscore
    void* target;
};

// Threads, locks and clocks.
std::span<adapter const> thread_adapters();

} // namespace quillo::macho
