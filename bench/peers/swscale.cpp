#include "bench/peers/swscale.h"

#include <map>
#include <memory>
#include <stdexcept>

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace bench {

namespace {

using context = std::shared_ptr<SwsContext>;

context open(std::string const& from, std::string const& to, int width, int height)
{
    AVPixelFormat const in = av_get_pix_fmt(from.c_str()), out = av_get_pix_fmt(to.c_str());
    context const made(sws_getContext(width, height, in, width, height, out, SWS_POINT, nullptr, nullptr, nullptr),
                       sws_freeContext);
    if (!made)
        throw std::runtime_error("swscale does not convert " + from + " to " + to);
    return made;
}

} // namespace

candidate swscale(char const* from, char const* to, job work)
{
    auto const contexts = std::make_shared<std::map<std::pair<int, int>, context>>();
    return {std::string("swscale ") + from + ">" + to, work,
            [=, in = std::string(from), out = std::string(to)](frame const& f) {
                auto& opened = (*contexts)[{f.width, f.height}];
                if (!opened)
                    opened = open(in, out, f.width, f.height);
                sws_scale(opened.get(), f.in, f.in_stride, 0, f.height, f.out, f.out_stride);
            }};
}

} // namespace bench
