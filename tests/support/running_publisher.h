// A publisher in the test's process, in a folder of its own, on a free port of 127.0.0.1.
#pragma once

#include "publisher/channel_server.h"
#include "publisher/publisher.h"
#include "sender/open/runtime_folder.h"
#include "tests/support/temporary_folder.h"

namespace quillo::testing {

struct running_publisher
{
    explicit running_publisher(publisher::publisher_settings const& settings)
        : everything(settings), local(lock, everything)
    {
    }
    explicit running_publisher(std::string const& encoder = {}) : everything(settings(encoder)), local(lock, everything)
    {
    }

    static publisher::publisher_settings settings(std::string const& encoder)
    {
        gst_init(nullptr, nullptr);
        publisher::publisher_settings made;
        made.rtsp.address = "127.0.0.1";
        made.rtsp.port = 0;
        made.encoder = encoder;
        made.announce = false;
        return made;
    }

    std::string socket() const { return open::socket_path(folder.path()); }
    std::string url(std::string const& path) const
    {
        return "rtsp://127.0.0.1:" + std::to_string(everything.port()) + path;
    }

    temporary_folder folder;
    publisher::folder_lock lock{folder.path()};
    publisher::publisher everything;
    publisher::channel_server local;
};

} // namespace quillo::testing
