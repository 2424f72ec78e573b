#include "tools/quillo/publisher_watch.h"
#include "tools/quillo/publisher_status.h"

#include <unistd.h>

namespace quillo {

namespace {

using namespace std::chrono_literals;

constexpr auto answer_time = 500ms;
constexpr auto pause_until_found = 100ms;
constexpr auto pause_after = 1s;

} // namespace

publisher_watch::publisher_watch(std::function<void(std::string const&, std::string const&)> found_)
    : found(std::move(found_)), thread(&publisher_watch::follow, this)
{
}

publisher_watch::~publisher_watch()
{
    {
        std::lock_guard const lock(mutex);
        quit = true;
    }
    changed.notify_all();
    thread.join();
}

void publisher_watch::follow()
{
    std::unique_lock lock(mutex);
    while (!quit) {
        lock.unlock();
        if (auto const status = publisher_status(answer_time)) {
            auto const own = sources_of(*status, getpid());
            int sum = 0;
            for (published_source const& source : own)
                sum += source.receivers;
            watching = sum;
            if (!told && !own.empty()) {
                told = true;
                found(own.front().name, own.front().url);
            }
        }
        lock.lock();
        changed.wait_for(lock, told ? pause_after : pause_until_found, [&] { return quit; });
    }
}

} // namespace quillo
