#include "publisher/sdp.h"

#include <string_view>

namespace quillo::publisher {

namespace {

constexpr char const* alpha_attribute = "x-quillo-alpha";
constexpr char const* straight = "straight"; // not multiplied into the fill

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

GstSDPMedia* media_at(GstSDPMessage& description, guint index)
{
    if (index >= gst_sdp_message_medias_len(&description))
        return nullptr;
    return const_cast<GstSDPMedia*>(gst_sdp_message_get_media(&description, index));
}

GstSDPMedia* first_media(GstSDPMessage& description) { return media_at(description, 0); }

void describe_pictures(GstSDPMedia& media, picture_format const& format, bool full_range)
{
    for (guint k = 0; k < gst_sdp_media_attributes_len(&media); ++k) {
        GstSDPAttribute const* const attribute = gst_sdp_media_get_attribute(&media, k);
        if (std::string_view{attribute->key} != "fmtp")
            continue;
        std::string text = attribute->value;
        text = with_value(text, "colorimetry=", "BT709-2");
        text += ";exactframerate=" + exact_rate(format.rate);
        text += full_range ? ";RANGE=FULL" : ";RANGE=NARROW";
        text += ";TCS=SDR;PAR=" + std::to_string(format.pixel_aspect.n) + ":" + std::to_string(format.pixel_aspect.d);
        GstSDPAttribute changed{};
        gst_sdp_attribute_set(&changed, "fmtp", text.c_str());
        gst_sdp_media_replace_attribute(&media, k, &changed);
        return;
    }
}

void name_media(GstSDPMedia* media, char const* name)
{
    gst_sdp_media_add_attribute(media, "mid", name);
    gst_sdp_media_add_attribute(media, "label", name);
}

} // namespace

void describe_raw(GstSDPMessage& description, picture_format const& format)
{
    if (GstSDPMedia* const media = first_media(description))
        describe_pictures(*media, format, format.layout != fill::uyvy);
}

void describe_key(GstSDPMessage& description, picture_format const& format)
{
    GstSDPMedia* const of_fill = first_media(description);
    GstSDPMedia* of_key = nullptr;
    for (guint k = 1; GstSDPMedia* const media = media_at(description, k); ++k)
        if (std::string_view{gst_sdp_media_get_media(media)} == "video")
            of_key = media;
    if (!of_key)
        return;
    describe_pictures(*of_key, format, true);
    name_media(of_fill, "fill");
    name_media(of_key, "key");
    gst_sdp_message_add_attribute(&description, "group", "LS fill key");
    gst_sdp_media_add_attribute(of_key, alpha_attribute, straight);
}

void describe_alpha(GstSDPMessage& description)
{
    if (GstSDPMedia* const media = first_media(description))
        gst_sdp_media_add_attribute(media, alpha_attribute, straight);
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
