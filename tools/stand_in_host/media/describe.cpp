#include "tools/stand_in_host/media/describe.h"

#include <gst/audio/audio.h>
#include <gst/video/video.h>

#include <algorithm>

namespace quillo::stand_in {

namespace {

constexpr int first_label = 100; // front left; the others count up from it

constexpr frame_rate rate_where_none_is_stated{30, 1};

field_order fields_of(GstVideoInfo const& info, GstBuffer* buffer)
{
    if (!GST_VIDEO_INFO_IS_INTERLACED(&info))
        return field_order::progressive;
    if (info.interlace_mode == GST_VIDEO_INTERLACE_MODE_MIXED &&
        !GST_BUFFER_FLAG_IS_SET(buffer, GST_VIDEO_BUFFER_FLAG_INTERLACED))
        return field_order::progressive;
    if (info.interlace_mode == GST_VIDEO_INTERLACE_MODE_INTERLEAVED &&
        GST_VIDEO_INFO_FIELD_ORDER(&info) != GST_VIDEO_FIELD_ORDER_UNKNOWN)
        return GST_VIDEO_INFO_FIELD_ORDER(&info) == GST_VIDEO_FIELD_ORDER_TOP_FIELD_FIRST ? field_order::upper_first
                                                                                          : field_order::lower_first;
    return GST_BUFFER_FLAG_IS_SET(buffer, GST_VIDEO_BUFFER_FLAG_TFF) ? field_order::upper_first
                                                                     : field_order::lower_first;
}

int label_of(GstAudioChannelPosition position)
{
    static constexpr GstAudioChannelPosition order[] = {GST_AUDIO_CHANNEL_POSITION_FRONT_LEFT,
                                                        GST_AUDIO_CHANNEL_POSITION_FRONT_RIGHT,
                                                        GST_AUDIO_CHANNEL_POSITION_FRONT_CENTER,
                                                        GST_AUDIO_CHANNEL_POSITION_LFE1,
                                                        GST_AUDIO_CHANNEL_POSITION_REAR_LEFT,
                                                        GST_AUDIO_CHANNEL_POSITION_REAR_RIGHT,
                                                        GST_AUDIO_CHANNEL_POSITION_REAR_CENTER,
                                                        GST_AUDIO_CHANNEL_POSITION_FRONT_LEFT_OF_CENTER,
                                                        GST_AUDIO_CHANNEL_POSITION_FRONT_RIGHT_OF_CENTER,
                                                        GST_AUDIO_CHANNEL_POSITION_SIDE_LEFT,
                                                        GST_AUDIO_CHANNEL_POSITION_SIDE_RIGHT,
                                                        GST_AUDIO_CHANNEL_POSITION_TOP_CENTER};
    auto const* const found = std::find(std::begin(order), std::end(order), position);
    return found == std::end(order) ? 0 : first_label + static_cast<int>(found - std::begin(order));
}

} // namespace

video_description describe_video(GstSample* sample)
{
    GstVideoInfo info;
    gst_video_info_from_caps(&info, gst_sample_get_caps(sample));
    video_description video;
    video.width = info.width;
    video.height = info.height;
    video.pixel_aspect_n = info.par_n;
    video.pixel_aspect_d = info.par_d;
    video.rate = info.fps_n > 0 ? nearest_common_rate(info.fps_n, info.fps_d) : rate_where_none_is_stated;
    video.fields = fields_of(info, gst_sample_get_buffer(sample));
    video.natural = GST_VIDEO_INFO_IS_RGB(&info) ? pixel_layout::bgra : pixel_layout::vuya;
    return video;
}

audio_description describe_audio(GstCaps* caps)
{
    GstAudioInfo info;
    gst_audio_info_from_caps(&info, caps);
    audio_description audio;
    audio.rate = info.rate;
    audio.channels = std::min(info.channels, max_channels);
    if (!GST_AUDIO_INFO_IS_UNPOSITIONED(&info))
        for (int k = 0; k < audio.channels; ++k)
            audio.labels[static_cast<std::size_t>(k)] = label_of(info.position[k]);
    else if (info.channels == 2 || info.channels == 6) // stereo and 5.1 in the usual order
        for (int k = 0; k < audio.channels; ++k)
            audio.labels[static_cast<std::size_t>(k)] = first_label + k;
    if (info.channels == 1)
        audio.labels[0] = label_of(GST_AUDIO_CHANNEL_POSITION_FRONT_CENTER);
    return audio;
}

} // namespace quillo::stand_in
