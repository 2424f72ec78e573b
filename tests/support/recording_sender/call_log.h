// One list of everything that the module under test called, in order: the fake host and the recording sender both write
// into it. Any thread.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quillo::test {

struct call
{
    std::string text; // "Name(argument, argument)"
    std::thread::id thread;
};

class call_log
{
  public:
    static call_log& instance();

    void clear();
    std::vector<call> calls() const;
    std::vector<std::string> lines() const;
    // Lines that begin with any of the prefixes.
    std::vector<std::string> lines(std::vector<std::string_view> const& prefixes) const;
    std::size_t count(std::string_view prefix) const;

    // Waits until so many lines begin with the prefix; false when that takes more than half a minute.
    bool wait_for(std::string_view prefix, std::size_t count = 1);

    // A quiet log takes nothing and no lock, so that it orders no threads that the module itself leaves unordered.
    void set_quiet(bool value) { quiet.store(value, std::memory_order_relaxed); }
    bool is_quiet() const { return quiet.load(std::memory_order_relaxed); }

    template <class... Parts>
    void add(Parts const&... parts)
    {
        if (is_quiet())
            return;
        std::ostringstream text;
        (text << ... << parts);
        append(text.str());
    }

  private:
    void append(std::string text);

    std::atomic<bool> quiet{false};
    mutable std::mutex mutex;
    std::condition_variable grown;
    std::vector<call> entries;
};

} // namespace quillo::test
