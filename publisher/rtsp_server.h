// The RTSP server: a port, the paths behind it, and a thread that accepts, ends dead receivers and runs timers.
#pragma once

#include "publisher/connection_threads.h"
#include "publisher/doors/rtsp_auth.h"
#include "publisher/gst_ptr.h"
#include "publisher/mounts/mount.h"
#include "publisher/receivers.h"

#include <memory>
#include <string>
#include <thread>

namespace quillo::publisher {

struct rtsp_settings
{
    std::string address = "::";         // "::" takes IPv4 too
    int port = 8554;                    // the next free one is taken if this is not; 0: any
    std::chrono::seconds dead_after{8}; // no progress on a connection on which data waits
    door_settings doors{};
    rtsp_locks locks{};
};

class rtsp_server
{
  public:
    static constexpr std::chrono::seconds patience{2}; // at the end
    static constexpr int ports_to_try = 50;

    // Listens. Throws std::runtime_error when no port can be had.
    rtsp_server(rtsp_settings const& settings, std::shared_ptr<receivers> all);
    rtsp_server(rtsp_server const&) = delete;
    rtsp_server& operator=(rtsp_server const&) = delete;
    // Ends all receivers in order, then whoever else is connected, and waits a little for the threads that served them:
    // the process may end right after.
    ~rtsp_server();

    int port() const { return port_; }

    // For those who come from now on.
    void change(door_settings const& settings, rtsp_locks const& locks);
    door_counts turned_away() const { return doors_->counts(); }

    void serve(std::string const& path, std::shared_ptr<mount> what); // path with its leading slash
    void withdraw(std::string const& path);                           // ends its viewers

  private:
    class departed;

    void listen(rtsp_settings const& settings);
    void accept(GSocket* listening);
    void welcome(GstRTSPClient* client);
    void run();
    void watch_connections();
    void link_is_back();

    std::shared_ptr<receivers> const all_;
    std::shared_ptr<running_threads> const threads_ = std::make_shared<running_threads>();
    context_ptr context_;
    loop_ptr loop_;
    object_ptr<GstRTSPServer> server_;
    object_ptr<GstRTSPMountPoints> points_;
    std::shared_ptr<departed> const departed_;
    std::shared_ptr<doors> const doors_;
    std::chrono::seconds const dead_after_;
    int port_ = 0;
    bool watched_ = false; // the thread's
    std::thread thread_;
};

} // namespace quillo::publisher
