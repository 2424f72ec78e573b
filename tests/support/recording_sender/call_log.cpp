#include "tests/support/recording_sender/call_log.h"

#include <algorithm>
#include <chrono>

namespace quillo::test {

call_log& call_log::instance()
{
    static call_log log;
    return log;
}

void call_log::clear()
{
    std::lock_guard const lock(mutex);
    entries.clear();
}

std::vector<call> call_log::calls() const
{
    std::lock_guard const lock(mutex);
    return entries;
}

std::vector<std::string> call_log::lines() const { return lines({""}); }

std::vector<std::string> call_log::lines(std::vector<std::string_view> const& prefixes) const
{
    std::lock_guard const lock(mutex);
    std::vector<std::string> found;
    for (call const& entry : entries) {
        auto const begins_entry = [&](std::string_view prefix) { return entry.text.starts_with(prefix); };
        if (std::any_of(prefixes.begin(), prefixes.end(), begins_entry))
            found.push_back(entry.text);
    }
    return found;
}

std::size_t call_log::count(std::string_view prefix) const { return lines({prefix}).size(); }

bool call_log::wait_for(std::string_view prefix, std::size_t wanted)
{
    std::unique_lock lock(mutex);
    auto const begins_entry = [&](call const& entry) { return entry.text.starts_with(prefix); };
    return grown.wait_for(lock, std::chrono::seconds(30), [&] {
        return static_cast<std::size_t>(std::count_if(entries.begin(), entries.end(), begins_entry)) >= wanted;
    });
}

void call_log::append(std::string text)
{
    std::lock_guard const lock(mutex);
    entries.push_back({std::move(text), std::this_thread::get_id()});
    grown.notify_all();
}

} // namespace quillo::test
