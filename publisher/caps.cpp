#include "publisher/caps.h"

namespace quillo::publisher {

namespace {

constexpr char const* full_range_bt709 = "1:3:5:1";

char const* name_of(fill layout)
{
    switch (layout) {
    case fill::bgr:
        return "BGR";
    case fill::bgra:
        return "BGRA";
    default:
        return "UYVY";
    }
}

} // namespace

caps_ptr picture_caps(picture_format const& format)
{
    auto caps = adopt<caps_ptr>(gst_caps_new_simple(
        "video/x-raw", "format", G_TYPE_STRING, name_of(format.layout), "width", G_TYPE_INT, format.width, "height",
        G_TYPE_INT, format.height, "framerate", GST_TYPE_FRACTION, format.rate.n, format.rate.d, "pixel-aspect-ratio",
        GST_TYPE_FRACTION, format.pixel_aspect.n, format.pixel_aspect.d, "interlace-mode", G_TYPE_STRING, "progressive",
        nullptr));
    // Senders make BT.709 at every size, where the default for small pictures would be BT.601.
    gst_caps_set_simple(caps.get(), "colorimetry", G_TYPE_STRING, format.layout == fill::uyvy ? "bt709" : "sRGB",
                        nullptr);
    return caps;
}

caps_ptr key_caps(picture_format const& format)
{
    auto caps = picture_caps(format);
    gst_caps_set_simple(caps.get(), "colorimetry", G_TYPE_STRING, full_range_bt709, nullptr);
    return caps;
}

caps_ptr s24be_caps(sound_format const& format)
{
    auto caps = adopt<caps_ptr>(gst_caps_new_simple("audio/x-raw", "format", G_TYPE_STRING, "S24BE", "layout",
                                                    G_TYPE_STRING, "interleaved", "rate", G_TYPE_INT, format.rate,
                                                    "channels", G_TYPE_INT, format.channels, nullptr));
    if (format.channels > 2)
        gst_caps_set_simple(caps.get(), "channel-mask", GST_TYPE_BITMASK, guint64{0}, nullptr);
    return caps;
}

GstVideoInfo picture_info(picture_format const& format)
{
    GstVideoInfo info;
    gst_video_info_init(&info);
    gst_video_info_from_caps(&info, picture_caps(format).get());
    return info;
}

GstVideoInfo alpha_info(picture_format const& format)
{
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_GRAY8, static_cast<guint>(format.width),
                              static_cast<guint>(format.height));
    return info;
}

} // namespace quillo::publisher
