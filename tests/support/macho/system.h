// What a loaded image's imports stand for here: the C++ library is this process's own libc++, the C library's functions
// are this system's where they mean the same, and small adapters where they do not.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillo::macho {

// The function or object behind a symbol of libSystem or libc++ (by install name); null where there is none.
void* system_symbol(std::string_view library, std::string_view symbol);

// The commands that loaded images gave to system() since the last call; none of them was run.
std::vector<std::string> take_system_commands();

} // namespace quillo::macho
