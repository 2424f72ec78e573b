// What one thread sleeps on while several others have news for it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace quillo::stand_in {

class bell
{
  public:
    // [any thread]
    void ring()
    {
        {
            std::lock_guard const lock(mutex);
            ++rung;
        }
        changed.notify_all();
    }

    unsigned long count() const
    {
        std::lock_guard const lock(mutex);
        return rung;
    }

    // Returns once the bell was rung more often than seen, or after the given time.
    void wait(unsigned long seen, std::chrono::milliseconds at_most) const
    {
        std::unique_lock lock(mutex);
        changed.wait_for(lock, at_most, [&] { return rung != seen; });
    }

  private:
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    unsigned long rung = 0;
};

} // namespace quillo::stand_in
