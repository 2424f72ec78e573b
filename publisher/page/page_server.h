// The page: every source with a live picture, who receives it, and how to. Runs on a thread of its own.
#pragma once

#include "publisher/page/http_server.h"
#include "publisher/page/jpeg_answer.h"
#include "publisher/page/loop_thread.h"
#include "publisher/page/visitor.h"
#include "publisher/publisher.h"

#include <memory>
#include <string>

namespace quillo::publisher {

class page_server
{
  public:
    // Listens, and adds its address to the publisher's status. Throws std::runtime_error when no port can be had.
    page_server(http_settings const& settings, publisher& shown);
    page_server(page_server const&) = delete;
    page_server& operator=(page_server const&) = delete;
    ~page_server(); // before the publisher

    int port() const { return port_; }
    std::string const& url() const { return url_; }

    static constexpr std::size_t max_pictures = 16; // of one source

  private:
    void get(SoupServerMessage* request, std::string const& path);
    void get_picture(SoupServerMessage* request, std::string_view name);
    std::shared_ptr<jpeg_feed> feed_of(std::shared_ptr<source> const& from);
    void welcome(SoupServerMessage* request, SoupWebsocketConnection* socket);
    std::shared_ptr<sound_levels> levels_of(std::shared_ptr<source> const& from);
    void tell_status();
    void tell_changes();
    void tell_levels();

    publisher& shown_;
    loop_thread loop_;
    std::unique_ptr<http_server> http_; // the loop's, as all that follows
    std::map<source const*, std::weak_ptr<jpeg_feed>> feeds_;
    std::map<jpeg_answer*, std::unique_ptr<jpeg_answer>> pictures_;
    std::map<source const*, std::weak_ptr<sound_levels>> levels_;
    std::map<visitor*, std::unique_ptr<visitor>> visitors_;
    unsigned changes_told_ = 0;
    loop_timer status_timer_, changes_timer_, levels_timer_;
    int port_ = 0;
    std::string url_;
};

} // namespace quillo::publisher
