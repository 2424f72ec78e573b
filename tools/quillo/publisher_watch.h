// Follows what the publisher says about this process's own source while it plays.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace quillo {

class publisher_watch
{
  public:
    // found is called once, on a thread of the watch, when the source's address is known.
    explicit publisher_watch(std::function<void(std::string const& name, std::string const& url)> found);
    publisher_watch(publisher_watch const&) = delete;
    publisher_watch& operator=(publisher_watch const&) = delete;
    ~publisher_watch();

    int receivers() const { return watching; } // of the last answer

  private:
    void follow();

    std::function<void(std::string const&, std::string const&)> found;
    std::atomic<int> watching = 0;
    bool told = false;
    bool quit = false;
    std::mutex mutex;
    std::condition_variable changed;
    std::thread thread;
};

} // namespace quillo
