// A host application whose frames are ready, and lie in memory like a renderer's: it only pushes them into the plug-in
// module, which converts and sends them.
#pragma once

#include "bench/road/test_picture.h"
#include "tools/stand_in_host/transmitter.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace quillo::bench {

class module_host
{
  public:
    module_host(std::filesystem::path const& file, int width, int height, int rate);

    // The frame to push next, VUYA, but for its stamp.
    void prepare(test_picture const& picture, std::uint32_t counter);
    void sign(test_picture const& picture, stamp const& s);
    void push(std::int64_t frame);

  private:
    stand_in::video_description const video_;
    stand_in::host_state state_;
    stand_in::module module_;
    std::vector<std::unique_ptr<stand_in::transmitter>> plug_ins_;
    stand_in::transmit_instance instance_;
    std::unique_ptr<stand_in::host_frame> next_;
    std::vector<std::uint8_t> uyvy_;
};

} // namespace quillo::bench
