// The RTSP server: a port, the paths behind it, and a thread that accepts, ends dead receivers and runs timers.
#pragma once

#include "publisher/gst_ptr.h"
#include "publisher/mounts/mount.h"
#include "publisher/receivers.h"

#include <memory>
#include <string>
#include <thread>

namespace quillo::publisher {

struct rtsp_settings
{
    std::string address = "::"; // "::" takes IPv4 too
    int port = 8554;            // the next free one is taken if this is not; 0: any
};

class rtsp_server
{
  public:
    static constexpr std::chrono::seconds patience{2}; // at the end
    static constexpr int ports_to_try = 50;
    static constexpr std::chrono::seconds dead_after{8}; // without any progress on a connection with data waiting

    // Listens. Throws std::runtime_error when no port can be had.
    rtsp_server(rtsp_settings const& settings, std::shared_ptr<receivers> all);
    rtsp_server(rtsp_server const&) = delete;
    rtsp_server& operator=(rtsp_server const&) = delete;
    ~rtsp_server(); // ends all connections, and waits a little for them

    int port() const { return port_; }

    void serve(std::string const& path, std::shared_ptr<mount> what); // path with its leading slash
    void withdraw(std::string const& path);                           // ends its viewers

  private:
    void listen(rtsp_settings const& settings);
    void run();
    void watch_connections();

    std::shared_ptr<receivers> const all_;
    context_ptr context_;
    loop_ptr loop_;
    object_ptr<GstRTSPServer> server_;
    object_ptr<GstRTSPMountPoints> points_;
    int port_ = 0;
    std::thread thread_;
};

} // namespace quillo::publisher
