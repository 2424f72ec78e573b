// All sources of this machine's senders, and everything that serves them.
#pragma once

#include "publisher/channel.h"
#include "publisher/discovery/discovery.h"
#include "publisher/encoder.h"
#include "publisher/receivers.h"
#include "publisher/rtsp_server.h"
#include "publisher/source.h"

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
};

class publisher
{
  public:
    static constexpr std::size_t max_sources = 32;

    explicit publisher(publisher_settings const& settings);

    int port() const { return server_.port(); }

    // A source that lives until close_source. A sender that comes back gets its path again, and takes the place
    // of what is left of itself. Null: too many.
    std::shared_ptr<source> open_source(introduction const& who, std::function<void()> wake);
    void close_source(std::shared_ptr<source> const& gone);

    std::size_t sources() const;
    std::string status() const; // JSON
    std::string url(std::string const& path) const;

  private:
    std::string free_path(introduction const& who);
    void announce(std::shared_ptr<source> const& made);
    void withdraw(source const& gone);
    std::string base_url() const;

    std::shared_ptr<receivers> const receivers_ = std::make_shared<receivers>();
    std::optional<encoder_choice> const encoder_;
    rtsp_server server_;
    std::string const address_; // for addresses that are shown

    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<source>> sources_;
    std::map<std::string, sender_id> paths_; // who has, or had, which path
    std::map<source const*, discovery::announcer::token> names_;
    std::unique_ptr<discovery::announcer> announcer_; // goes first: its thread calls back
};

} // namespace quillo::publisher
