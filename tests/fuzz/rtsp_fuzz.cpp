// Anything at all to the RTSP server, over a connection as strangers make it.
#include "publisher/log.h"
#include "publisher/rtsp_server.h"
#include "tests/fuzz/stranger.h"

#include <thread>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    using namespace quillo::publisher;
    static rtsp_server* const server = [] {
        gst_init(nullptr, nullptr);
        quillo::log::set_level(quillo::log::level::error);
        rtsp_settings settings;
        settings.address = "127.0.0.1";
        settings.port = 0;
        settings.doors.connections = 10000;
        return new rtsp_server{settings, std::make_shared<receivers>()};
    }();
    // Those who come faster than they are taken wait for a second.
    std::this_thread::sleep_for(std::chrono::milliseconds{1});
    // Connections are kept for a second after their end.
    quillo::fuzz::say(server->port(), data, size, 2000);
    return 0;
}
