// The local socket: accepts senders and programs that ask for the status, a thread for each.
#pragma once

#include "publisher/publisher.h"
#include "sender/open/descriptor.h"
#include "sender/open/waker.h"

#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace quillo::publisher {

// The right to publish for this user: one process at a time has it.
class folder_lock
{
  public:
    // Makes the folder where it is missing. Throws already_running, or std::runtime_error when it cannot be used.
    explicit folder_lock(std::string folder);

    struct already_running : std::runtime_error
    {
        using std::runtime_error::runtime_error;
    };

    std::string const& folder() const { return folder_; }

  private:
    std::string const folder_;
    open::descriptor lock_;
};

class channel_server
{
  public:
    static constexpr std::size_t max_connections = 64;
    static constexpr std::chrono::seconds silence_allowed{5}; // before a connection says what it is
    static constexpr std::chrono::milliseconds tick_interval{20};

    // Listens at a socket of its own in the folder, or at one that listens already and belongs to somebody else. Throws
    // std::runtime_error when the socket cannot be made.
    channel_server(folder_lock const& lock, publisher& owner, open::descriptor listening = {});
    channel_server(channel_server const&) = delete;
    channel_server& operator=(channel_server const&) = delete;
    ~channel_server(); // ends all connections, and with them their sources

    // How long there has been no source, zero while there is one.
    std::chrono::steady_clock::duration idle_for() const;

  private:
    struct connection
    {
        std::thread thread;
        // Shared: a viewer may still hold the source when its connection is gone.
        std::shared_ptr<open::waker> waker = std::make_shared<open::waker>();
        std::atomic<bool> done{false};
    };

    void accept_all();
    void start(open::descriptor connected);
    void reap(bool all);
    void serve(connection& self, open::descriptor connected);
    void talk(connection& self, channel& peer, std::optional<held_source> const& held);
    void keep_slate(connection& self, held_source const& held);

    std::string const path_; // empty: not ours to take away
    publisher& owner_;
    open::descriptor socket_;
    open::waker waker_;
    std::atomic<bool> stopping_{false};
    std::atomic<std::chrono::steady_clock::rep> last_source_;
    std::list<connection> connections_; // the accepting thread's, until it has been joined
    std::thread thread_;
};

} // namespace quillo::publisher
