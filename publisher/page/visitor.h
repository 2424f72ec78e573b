// One open page: a WebSocket over which it gets the status and the sound levels, and makes its WebRTC connections.
//
// Messages are JSON objects, known by their first word. From the browser:
//   {"watch": id, "path": "/x", "video": ["H264", ...]}   {"stop": id}
//   {"answer": id, "sdp": "..."}   {"candidate": id, "mline": 0, "text": "..."}
//   {"levels": ["/x", ...]}        {"seen": count}
// To the browser:
//   {"status": {...}, "count": n}  {"levels": {"/x": [[peak, average], ...]}, "count": n}  {"delay": {"id": ms}}
//   {"offer": id, "sdp": "..."}    {"candidate": id, "mline": 0, "text": "..."}  {"refused": id, "why": "..."}
#pragma once

#include "publisher/page/http_server.h"
#include "publisher/page/rtc_viewer.h"
#include "publisher/page/sound_levels.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace quillo::publisher {

class visitor : rtc_talk
{
  public:
    static constexpr std::size_t max_viewers = 16; // of one page
    static constexpr std::size_t max_rtc = 32;     // of one source
    static constexpr std::size_t longest_message = 64 * 1024;
    // A page that does not keep up is told less; levels, which come often, leave room for the status.
    static constexpr int most_unseen = 4;
    static constexpr int most_unseen_before_levels = 2;
    static constexpr std::chrono::seconds silence_allowed{15};

    struct surroundings
    {
        loop_thread& loop;
        publisher& shown;
        std::function<std::shared_ptr<sound_levels>(std::shared_ptr<source> const&)> levels_of;
    };

    // gone is called when the connection has ended.
    visitor(surroundings around, SoupServerMessage* request, SoupWebsocketConnection* socket,
            std::function<void(visitor*)> gone);
    visitor(visitor const&) = delete;
    visitor& operator=(visitor const&) = delete;
    ~visitor() override;

    // Those come at intervals, from whoever has the visitors.
    void tell_status(nlohmann::json const& status);
    void tell_levels(nlohmann::json const& levels_by_path);

    std::set<std::string> const& wanted_levels() const { return wanted_levels_; }
    void find_levels();     // of the sources that have the wanted paths now
    bool is_silent() const; // has not answered for long
    std::string const& address() const { return address_; }

  private:
    void offer(int id, std::string const& sdp) override;
    void candidate(int id, unsigned mline, std::string const& text) override;
    void over(int id, std::string const& why) override;

    void take(std::string_view text);
    void take_message(nlohmann::json const& message);
    void watch(int id, nlohmann::json const& message);
    void want_levels(nlohmann::json const& paths);
    void send(nlohmann::json const& message);
    bool send_counted(nlohmann::json message, int most_before);

    surroundings const around_;
    object_ptr<SoupWebsocketConnection> const socket_;
    std::string const address_;
    std::string const agent_;
    std::function<void(visitor*)> const gone_;
    std::map<int, std::shared_ptr<rtc_viewer>> viewers_;
    std::set<std::string> wanted_levels_;               // paths, whether there is such a source or not
    std::vector<std::shared_ptr<sound_levels>> levels_; // held so that they are computed
    int count_ = 0;
    int seen_ = 0;
    steady::time_point last_seen_ = steady::now();
};

} // namespace quillo::publisher
