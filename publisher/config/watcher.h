// Looks out for changes of the configuration file.
#pragma once

#include "publisher/gst_ptr.h"

#include <chrono>
#include <functional>
#include <string>
#include <thread>

namespace quillo::publisher {

class configuration_watcher
{
  public:
    static constexpr std::chrono::milliseconds settling{200}; // after the last of several changes

    // changed is called on the watcher's thread, when the file is another one or says something else. It need not be
    // there yet, and may be away for a while.
    configuration_watcher(std::string const& file, std::function<void()> changed);
    configuration_watcher(configuration_watcher const&) = delete;
    configuration_watcher& operator=(configuration_watcher const&) = delete;
    ~configuration_watcher();

    void look_now(); // from any thread

  private:
    void run(std::string const& file);
    void change_seen(std::chrono::milliseconds wait);

    std::function<void()> const changed_;
    context_ptr context_;
    loop_ptr loop_;
    g_source_ptr pending_; // the watcher's thread only
    std::thread thread_;
};

} // namespace quillo::publisher
