// All sources of this machine's senders, and everything that serves them.
#pragma once

#include "publisher/channel.h"
#include "publisher/discovery/discovery.h"
#include "publisher/encoder.h"
#include "publisher/mounts/encoded_mount.h"
#include "publisher/receivers.h"
#include "publisher/rtsp_server.h"
#include "publisher/source.h"

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quillo::publisher {

struct publisher_settings
{
    rtsp_settings rtsp;
    std::string encoder;  // only this one; empty: the best
    bool announce = true; // by name on the local network
    viewer_limits limits{};
    std::chrono::seconds slate{0}; // how long a source stays when its sender has gone
};

// A sender's hold on its source, until another one takes the source over.
struct held_source
{
    std::shared_ptr<source> of;
    unsigned sender = 0;

    bool is_over() const { return of->senders() != sender; }
};

// What a source offers to a page.
struct served_source
{
    std::shared_ptr<source> from;
    std::shared_ptr<encoded_mount> encoded; // null where nothing encodes
};

class publisher
{
  public:
    static constexpr std::size_t max_sources = 32;

    explicit publisher(publisher_settings const& settings);

    int port() const { return server_.port(); }

    // For those who come from now on. Whether connections are encrypted cannot change.
    void change(door_settings const& doors, rtsp_locks const& locks, viewer_limits const& limits,
                std::chrono::seconds slate);

    // A source that lives until close_source. A sender that comes back gets its path again, and takes the place
    // of what is left of itself, or the source that waits for it. Nothing: too many.
    std::optional<held_source> open_source(introduction const& who, std::function<void()> wake);
    // Its sender has gone. How long it shall stay, with a slate, for a sender that comes back; zero: it does not.
    std::chrono::seconds leave_source(held_source const& left);
    bool waits(held_source const& left) const;  // still, and nobody has come back
    void close_source(held_source const& gone); // unless somebody else holds it by now

    std::size_t sources() const;
    unsigned changes() const { return changes_; } // sources that came or went
    std::string status() const;                   // JSON
    std::optional<served_source> find(std::string const& path) const;
    std::shared_ptr<receivers> const& everybody() const { return receivers_; }
    void add_url(std::string const& kind, std::string const& url); // of another server beside this one, for the status
    std::string url(std::string const& path) const;

  private:
    std::string free_path(introduction const& who);
    void close(std::shared_ptr<source> const& gone);
    bool has(std::shared_ptr<source> const& one) const;
    std::chrono::seconds time_away() const;
    void leave(source& left);
    void resume(std::shared_ptr<source> const& waiting, introduction const& who, std::function<void()> wake);
    void serve_uncompressed(std::shared_ptr<source> const& made);
    void withdraw_uncompressed(source const& gone);
    void announce(std::shared_ptr<source> const& made);
    void unannounce(source const& gone);
    void withdraw(source const& gone);
    std::vector<std::string> mounts() const; // what stands behind a source's path
    std::string base_url() const;

    std::shared_ptr<receivers> const receivers_;
    std::optional<encoder_choice> const encoder_;
    bool const encrypted_;
    std::atomic<bool> password_;
    std::atomic<std::chrono::seconds> slate_;
    rtsp_server server_;
    std::string const address_; // for addresses that are shown

    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<source>> sources_;
    std::map<std::string, sender_id> paths_; // who has, or had, which path
    std::map<source const*, std::shared_ptr<encoded_mount>> encoded_;
    std::map<std::string, std::string> urls_;
    std::atomic<unsigned> changes_{0};
    std::map<source const*, discovery::announcer::token> names_;
    std::unique_ptr<discovery::announcer> announcer_; // goes first: its thread calls back
};

} // namespace quillo::publisher
