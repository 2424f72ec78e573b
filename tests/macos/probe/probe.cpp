// A small module that does what the real one does with its system, and what it might come to do: each exported function
// is one question to the loader.
#include "tests/macos/probe/probe.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

int constructed = 0;
int (*volatile host_function)(int) = nullptr;

struct constructed_at_load
{
    constructed_at_load() { constructed = 41; }
    ~constructed_at_load() { constructed = 0; }
} at_load;

struct guard
{
    int& counter;
    ~guard() { ++counter; }
};

// Many live values across the call, so that every callee-saved register has to be restored on the way up.
[[gnu::noinline]] int deep(int depth, int& unwound, int (*leaf)(int))
{
    guard const g{unwound};
    if (depth == 0)
        return leaf(7);
    int const a = depth * 3, b = depth * 5, c = depth * 7, d = depth * 11, e = depth * 13;
    int const below = deep(depth - 1, unwound, leaf);
    return below + a * b + c * d + e;
}

int throws(int) { throw std::runtime_error("from the leaf"); }

// A frame too large for an immediate in the prologue's short form.
[[gnu::noinline]] int large_frame(int (*leaf)(int), int& unwound)
{
    guard const g{unwound};
    char volatile block[70000];
    for (unsigned i = 0; i < sizeof block; i += 4096)
        block[i] = static_cast<char>(i);
    return leaf(block[8192]);
}

int guarded_value()
{
    static int const value = std::rand() < 0 ? 0 : ++constructed;
    return value;
}

} // namespace

int probe_constructed() { return constructed; }

int probe_static_guard() { return guarded_value() * 100 + guarded_value(); }

int probe_catch_inside(int depth)
{
    int unwound = 0;
    try {
        deep(depth, unwound, throws);
    } catch (std::runtime_error const& error) {
        return std::strcmp(error.what(), "from the leaf") == 0 ? unwound : -1;
    }
    return -2;
}

int probe_catch_through_large_frame()
{
    int unwound = 0;
    try {
        large_frame(throws, unwound);
    } catch (std::exception const&) {
        return unwound;
    }
    return -1;
}

int probe_call_host(int (*function)(int), int value, int* unwound)
{
    host_function = function;
    return deep(value, *unwound, host_function);
}

void probe_throw_out(char const* text) { throw std::invalid_argument(text); }

int probe_threads(int count)
{
    std::mutex mutex;
    std::condition_variable changed;
    int arrived = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&] {
            std::unique_lock lock(mutex);
            ++arrived;
            changed.notify_all();
            changed.wait(lock, [&] { return arrived == count; });
        });
    for (auto& thread : threads)
        thread.join();
    std::unique_lock lock(mutex);
    bool const in_time = changed.wait_for(lock, std::chrono::milliseconds(1), [] { return false; });
    return in_time ? -1 : arrived;
}

long long probe_slept_ns(int milliseconds)
{
    auto const before = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    return std::chrono::nanoseconds(std::chrono::steady_clock::now() - before).count();
}

int probe_grow(int bytes)
{
    auto* block = static_cast<unsigned char*>(std::realloc(nullptr, 16));
    std::memset(block, 5, 16);
    block = static_cast<unsigned char*>(std::realloc(block, static_cast<std::size_t>(bytes)));
    int const kept = block[15];
    std::free(block);
    return kept;
}

void probe_print(char const* text) { std::cout << text << std::endl; }

int probe_system(char const* command) { return std::system(command); }

int probe_formatted(char const* text, int value)
{
    std::string const whole = std::string(text) + "=" + std::to_string(value) + " and enough to leave the short form";
    return static_cast<int>(whole.size());
}
