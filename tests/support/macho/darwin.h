// Adapters between the macOS C library's interface and this system's, in tables by symbol.
#pragma once

#include <cerrno>
#include <span>
#include <string_view>

namespace quillo::macho {

struct adapter
{
    std::string_view symbol; // with its leading underscore
    void* target;
};

template <class F>
adapter adapt(std::string_view symbol, F* function)
{
    return {symbol, reinterpret_cast<void*>(function)};
}

// Threads, locks, promises and clocks.
std::span<adapter const> thread_adapters();

// Descriptors, files and memory.
std::span<adapter const> file_adapters();

// Sockets of the local kind.
std::span<adapter const> socket_adapters();

// Signals and other processes.
std::span<adapter const> process_adapters();

// errno as loaded images see it, by Darwin's numbers, one a thread.
int* darwin_error();

int darwin_number(int error_here);

// Passes a call's result on, and what went wrong by Darwin's number.
template <class Result>
Result told(Result result)
{
    if (result == (Result)-1)
        *darwin_error() = darwin_number(errno);
    return result;
}

} // namespace quillo::macho
