// Fills the slots of the generated jumps with the module's functions before any test runs.
#include "tests/support/macho/image.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <exception>
#include <string>
#include <strings.h>

#ifdef __x86_64__
#include "tests/support/macho/core_foundation.h"
#include "tests/support/macho/system.h"
#endif

extern "C" {
struct quillo_thunk
{
    char const* name;
    void** slot;
};
extern quillo_thunk const quillo_thunks[];
}

namespace {

[[noreturn]] void missing_import()
{
    std::fputs("a conversion function called an import that it has no business with\n", stderr);
    std::abort();
}

#ifndef __x86_64__
void set_pattern(unsigned char* to, unsigned char const* pattern, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        to[i] = pattern[i % 16];
}
#endif

// Conversions call next to nothing; whatever else the module imports stays unbound.
void* import(std::string_view library, std::string_view symbol)
{
#ifdef __x86_64__
    for (auto const table : {quillo::macho::core_foundation_adapters(), quillo::macho::core_services_adapters()})
        for (auto const& each : table)
            if (each.symbol == symbol)
                return each.target;
    if (void* const found = quillo::macho::system_symbol(library, symbol))
        return found;
#else
    (void)library;
    static std::pair<std::string_view, void*> const known[] = {
        {"_memcpy", reinterpret_cast<void*>(&std::memcpy)},
        {"_memset", reinterpret_cast<void*>(&std::memset)},
        {"_memmove", reinterpret_cast<void*>(&std::memmove)},
        {"_memset_pattern16", reinterpret_cast<void*>(&set_pattern)},
        {"_bzero", reinterpret_cast<void*>(&bzero)},
        {"__Znwm", reinterpret_cast<void*>(static_cast<void* (*)(std::size_t)>(&operator new))},
        {"__ZdlPv", reinterpret_cast<void*>(static_cast<void (*)(void*)>(&operator delete))},
        {"___cxa_guard_acquire", reinterpret_cast<void*>(&abi::__cxa_guard_acquire)},
        {"___cxa_guard_release", reinterpret_cast<void*>(&abi::__cxa_guard_release)},
        {"___cxa_atexit", reinterpret_cast<void*>(&abi::__cxa_atexit)},
    };
    for (auto const& [name, function] : known)
        if (name == symbol)
            return function;
#endif
    return reinterpret_cast<void*>(&missing_import);
}

struct filled
{
    filled()
    try {
        static quillo::macho::image const module(QUILLO_MACOS_MODULE, import);
        for (auto const* each = quillo_thunks; each->name != nullptr; ++each) {
            *each->slot = module.local("_" + std::string(each->name));
            if (*each->slot == nullptr)
                throw std::runtime_error(std::string(each->name) + " is not in the module");
        }
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        std::exit(1);
    }
};

// Before the tests' own objects, which may already convert.
[[gnu::init_priority(101)]] filled const at_start;

} // namespace
