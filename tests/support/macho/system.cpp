#include "tests/support/macho/system.h"

#include "tests/support/macho/darwin.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <mutex>
#include <strings.h>
#include <utility>

namespace quillo::macho {

namespace {

// Same meaning, same types, same constants on both systems. errno values differ, so functions that are only asked
// whether they failed may stand here, those whose errno is looked at may not.
constexpr auto same_here = std::to_array<std::string_view>({
    "__assert_rtn", "__cxa_atexit", "abort",   "calloc",  "fflush",    "free",   "malloc",  "memchr",
    "memcmp",       "memcpy",       "memmove", "memset",  "nanosleep", "rand",   "realloc", "strcat",
    "strcmp",       "strcpy",       "strlen",  "strncmp", "wcscat",    "wcscpy", "wcslen",  "_Unwind_Resume",
    "truncf",       "environ",      "getenv",  "getpid",  "getuid",    "bzero",
});

std::mutex commands_mutex;
std::vector<std::string> commands;

int recorded_system(char const* command)
{
    std::scoped_lock const lock(commands_mutex);
    commands.emplace_back(command);
    return 0;
}

void set_pattern(void* to, void const* pattern, std::size_t size)
{
    auto* bytes = static_cast<unsigned char*>(to);
    for (; size > 0; bytes += 16, size -= std::min<std::size_t>(size, 16))
        std::memcpy(bytes, pattern, std::min<std::size_t>(size, 16));
}

void no_lazy_binding()
{
    std::abort(); // everything was bound at load
}

} // namespace

std::vector<std::string> take_system_commands()
{
    std::scoped_lock const lock(commands_mutex);
    return std::exchange(commands, {});
}

void* system_symbol(std::string_view library, std::string_view symbol)
{
    std::array const own = {adapt("_system", recorded_system), adapt("dyld_stub_binder", no_lazy_binding),
                            adapt("___bzero", bzero), adapt("_memset_pattern16", set_pattern)};
    auto const named = [&](adapter const& each) { return each.symbol == symbol; };
    for (std::span<adapter const> const table :
         {std::span<adapter const>(own), thread_adapters(), file_adapters(), socket_adapters(), process_adapters()})
        if (auto const found = std::ranges::find_if(table, named); found != table.end())
            return found->target;

    if (symbol.empty() || symbol.front() != '_')
        return nullptr;
    std::string const here(symbol.substr(1));
    if (library == "/usr/lib/libc++.1.dylib")
        return dlsym(RTLD_DEFAULT, here.c_str());
    if (library == "/usr/lib/libSystem.B.dylib" && std::ranges::find(same_here, here) != same_here.end())
        return dlsym(RTLD_DEFAULT, here.c_str());
    return nullptr;
}

} // namespace quillo::macho
