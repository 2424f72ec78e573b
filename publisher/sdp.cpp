#include "publisher/sdp.h"

#include <string_view>

namespace quillo::publisher {

namespace {

std::string exact_rate(rational rate)
{
    return rate.d == 1 ? std::to_string(rate.n) : std::to_string(rate.n) + "/" + std::to_string(rate.d);
}

// "96 a=1;colorimetry=x;b=2" with another value for the key.
std::string with_value(std::string text, std::string_view key, std::string_view value)
{
    std::size_t const at = text.find(key);
    if (at == std::string::npos)
        return text + ";" + std::string{key} + std::string{value};
    std::size_t const from = at + key.size();
    std::size_t const to = text.find(';', from);
    return text.replace(from, to == std::string::npos ? to : to - from, value);
}

GstSDPMedia* first_media(GstSDPMessage& description)
{
    if (gst_sdp_message_medias_len(&description) == 0)
        return nullptr;
    return const_cast<GstSDPMedia*>(gst_sdp_message_get_media(&description, 0));
}

} // namespace

void describe_raw(GstSDPMessage& description, picture_format const& format)
{
    GstSDPMedia* const media = first_media(description);
    if (!media)
        return;
    for (guint k = 0; k < gst_sdp_media_attributes_len(media); ++k) {
        GstSDPAttribute const* const attribute = gst_sdp_media_get_attribute(media, k);
        if (std::string_view{attribute->key} != "fmtp")
            continue;
        std::string text = attribute->value;
        text = with_value(text, "colorimetry=", "BT709-2");
        text += ";exactframerate=" + exact_rate(format.rate);
        text += format.layout == fill::bgr ? ";RANGE=FULL" : ";RANGE=NARROW";
        text += ";TCS=SDR;PAR=" + std::to_string(format.pixel_aspect.n) + ":" + std::to_string(format.pixel_aspect.d);
        GstSDPAttribute changed{};
        gst_sdp_attribute_set(&changed, "fmtp", text.c_str());
        gst_sdp_media_replace_attribute(media, k, &changed);
        return;
    }
}

void describe_source(GstSDPMessage& description, picture_format const& format, std::string const& name)
{
    gst_sdp_message_set_session_name(&description, name.c_str());
    for (guint k = 0; k < gst_sdp_message_attributes_len(&description); ++k)
        if (std::string_view{gst_sdp_message_get_attribute(&description, k)->key} == "tool") {
            GstSDPAttribute tool{};
            gst_sdp_attribute_set(&tool, "tool", "Quillo Transmit " QUILLO_VERSION);
            gst_sdp_message_replace_attribute(&description, k, &tool);
        }
    if (GstSDPMedia* const media = first_media(description); media && format.woven)
        gst_sdp_media_add_attribute(media, "x-quillo-fields", "woven, upper field first");
}

} // namespace quillo::publisher
