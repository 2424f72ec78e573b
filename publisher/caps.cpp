#include "publisher/caps.h"

namespace quillo::publisher {

caps_ptr picture_caps(picture_format const& format)
{
    bool const bgr = format.layout == fill::bgr;
    auto caps = adopt<caps_ptr>(gst_caps_new_simple(
        "video/x-raw", "format", G_TYPE_STRING, bgr ? "BGR" : "UYVY", "width", G_TYPE_INT, format.width, "height",
        G_TYPE_INT, format.height, "framerate", GST_TYPE_FRACTION, format.rate.n, format.rate.d, "pixel-aspect-ratio",
        GST_TYPE_FRACTION, format.pixel_aspect.n, format.pixel_aspect.d, "interlace-mode", G_TYPE_STRING, "progressive",
        nullptr));
    // Senders make BT.709 at every size, where the default for small pictures would be BT.601.
    gst_caps_set_simple(caps.get(), "colorimetry", G_TYPE_STRING, bgr ? "sRGB" : "bt709", nullptr);
    return caps;
}

GstVideoInfo picture_info(picture_format const& format)
{
    GstVideoInfo info;
    gst_video_info_from_caps(&info, picture_caps(format).get());
    return info;
}

} // namespace quillo::publisher
