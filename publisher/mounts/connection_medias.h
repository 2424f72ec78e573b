// What a connection has asked for ends with it. Who asks and goes without a SETUP would otherwise keep a pipeline with
// its pictures for as long as gst-rtsp-server keeps what is left of the connection.
#pragma once

#include "publisher/gst_ptr.h"

#include <cstddef>
#include <vector>

namespace quillo::publisher {

// For the connection's thread.
class connection_medias
{
  public:
    // Lives as long as the client.
    static connection_medias& of(GstRTSPClient* client);

    // Does not keep it; it is unprepared when the client says that it is closed.
    void add(GstRTSPMedia* one);

    std::size_t count() const { return medias_.size(); }

  private:
    void end();

    // Not through g_signal_connect_object(): where client and media go at once on two threads, GLib ends the process.
    std::vector<weak_object<GstRTSPMedia>> medias_;
};

} // namespace quillo::publisher
