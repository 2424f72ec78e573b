#include "bench/peers/gstreamer.h"

#include <map>
#include <memory>
#include <stdexcept>

#include <gst/video/video.h>

namespace bench {

namespace {

GstVideoInfo describe(std::string const& format, std::string const& matrix, int width, int height)
{
    GstVideoInfo info;
    gst_video_info_set_format(&info, gst_video_format_from_string(format.c_str()), static_cast<guint>(width),
                              static_cast<guint>(height));
    bool const rgb = GST_VIDEO_INFO_IS_RGB(&info);
    info.colorimetry.range = rgb ? GST_VIDEO_COLOR_RANGE_0_255 : GST_VIDEO_COLOR_RANGE_16_235;
    info.colorimetry.matrix = rgb                 ? GST_VIDEO_COLOR_MATRIX_RGB
                              : matrix == "bt709" ? GST_VIDEO_COLOR_MATRIX_BT709
                                                  : GST_VIDEO_COLOR_MATRIX_BT601;
    info.colorimetry.transfer = GST_VIDEO_TRANSFER_BT709;
    info.colorimetry.primaries = GST_VIDEO_COLOR_PRIMARIES_BT709;
    return info;
}

struct session
{
    GstVideoInfo in, out;
    std::unique_ptr<GstVideoConverter, void (*)(GstVideoConverter*)> converter{nullptr, gst_video_converter_free};

    session(std::string const& from, std::string const& to, std::string const& matrix, int width, int height)
        : in(describe(from, matrix, width, height)), out(describe(to, matrix, width, height))
    {
        auto* const options =
            gst_structure_new("options", GST_VIDEO_CONVERTER_OPT_DITHER_METHOD, GST_TYPE_VIDEO_DITHER_METHOD,
                              GST_VIDEO_DITHER_NONE, GST_VIDEO_CONVERTER_OPT_CHROMA_RESAMPLER_METHOD,
                              GST_TYPE_VIDEO_RESAMPLER_METHOD, GST_VIDEO_RESAMPLER_METHOD_NEAREST, nullptr);
        converter.reset(gst_video_converter_new(&in, &out, options));
        if (!converter)
            throw std::runtime_error("GStreamer does not convert " + from + " to " + to);
    }
};

// A frame over memory that is not a GstBuffer's.
template <class Plane>
GstVideoFrame wrap(GstVideoInfo const& info, Plane* const* planes, int const* strides)
{
    GstVideoFrame wrapped{};
    wrapped.info = info;
    for (guint i = 0; i < GST_VIDEO_INFO_N_PLANES(&info); ++i) {
        wrapped.data[i] = const_cast<unsigned char*>(planes[i]);
        wrapped.info.stride[i] = strides[i];
    }
    return wrapped;
}

} // namespace

candidate gstreamer(char const* from, char const* to, job work, char const* matrix)
{
    gst_init(nullptr, nullptr);
    auto const sessions = std::make_shared<std::map<std::pair<int, int>, std::unique_ptr<session>>>();
    return {std::string("gst ") + from + ">" + to, work,
            [=, in = std::string(from), out = std::string(to), colours = std::string(matrix)](frame const& f) {
                auto& opened = (*sessions)[{f.width, f.height}];
                if (!opened)
                    opened = std::make_unique<session>(in, out, colours, f.width, f.height);
                GstVideoFrame const source = wrap(opened->in, f.in, f.in_stride);
                GstVideoFrame target = wrap(opened->out, f.out, f.out_stride);
                gst_video_converter_frame(opened->converter.get(), &source, &target);
            },
            false};
}

} // namespace bench
