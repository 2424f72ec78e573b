// A small HTTP server for people who are near: no request body, one request a connection, and limits on everything that
// a stranger could make long, large or many.
#pragma once

#include "publisher/gst_ptr.h"
#include "publisher/page/loop_thread.h"

#include <libsoup/soup.h>

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillo::publisher {

struct http_settings
{
    std::string address = "localhost"; // 127.0.0.1 and ::1; "::" is every address
    int port = 8580;                   // the next free one is taken if this is not; 0: any
    std::size_t max_connections = 64;
    std::chrono::milliseconds request_time{10'000}; // from the connection to a whole request
    std::chrono::milliseconds answer_time{30'000};  // until an answer has been taken

    // The locks, all open when left as they are.
    std::shared_ptr<GTlsCertificate> certificate;               // with its key: https only
    std::string user;                                           // empty: nobody is asked
    std::string password;                                       // by digest
    std::function<bool(std::string const& address)> is_allowed; // by remote address, numeric
};

// Made, used and destroyed on a loop's thread; handlers are called there.
class http_server
{
  public:
    static constexpr int ports_to_try = 50;
    static constexpr int backlog = 128;
    static constexpr std::size_t max_body = 64 * 1024; // read and thrown away

    struct handlers
    {
        // GET or HEAD of a path. An answer is given by answer() or by setting a status.
        std::function<void(SoupServerMessage* request, std::string const& path)> get;
        // A WebSocket at socket_path.
        std::function<void(SoupServerMessage* request, SoupWebsocketConnection* socket)> socket;
        std::string socket_path;
    };

    // Listens. Throws std::runtime_error when no port can be had.
    http_server(GMainContext* context, http_settings settings, handlers what);
    http_server(http_server const&) = delete;
    http_server& operator=(http_server const&) = delete;
    ~http_server(); // ends all connections

    int port() const { return port_; }
    std::size_t connections() const { return open_.size(); }

    // Of an answer without end: part of it has been taken, the rest has its time anew.
    void progress(SoupServerMessage* request);

    // Whoever speaks to this connection watches over it from here on.
    void keep_open(SoupServerMessage* request);

  private:
    using clock = std::chrono::steady_clock;

    struct connection
    {
        object_ptr<GSocket> socket;
        std::optional<clock::time_point> deadline;
    };

    void listen();
    bool listen_at(std::string const& address, int port);
    void incoming(GSocketConnection* connected);
    void started(SoupServerMessage* request);
    void check(SoupServerMessage* request);
    void close_late();
    connection* of(SoupServerMessage* request);

    http_settings const settings_;
    handlers const handlers_;
    std::vector<std::string> const names_;
    object_ptr<SoupServer> server_;
    object_ptr<GSocketService> service_;
    int port_ = 0;
    std::map<GSocketAddress*, connection> open_; // by the address object that requests carry
    loop_timer timer_;
};

// A whole answer.
void answer(SoupServerMessage* request, unsigned status, char const* type, std::string_view body);

// A header of the request, empty when there is none.
std::string header(SoupServerMessage* request, char const* name);

// Numeric, without port.
std::string remote_address(SoupServerMessage* request);

} // namespace quillo::publisher
