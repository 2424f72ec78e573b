#include "tools/sdk_file_host/media_export.h"

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/pixels.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace quillo::sdk_file {

namespace {

csSDK_int32 field_type(stand_in::field_order order)
{
    switch (order) {
    case stand_in::field_order::upper_first:
        return prFieldsUpperFirst;
    case stand_in::field_order::lower_first:
        return prFieldsLowerFirst;
    default:
        return prFieldsNone;
    }
}

csSDK_int32 channel_type(int channels)
{
    switch (channels) {
    case 1:
        return kPrAudioChannelType_Mono;
    case 2:
        return kPrAudioChannelType_Stereo;
    case 6:
        return kPrAudioChannelType_51;
    default:
        throw std::runtime_error("its sound has " + std::to_string(channels) +
                                 " channels; 1, 2 or 6 can be stored (leave it out with --no-audio)");
    }
}

// The float layout in BT.601, from the 8-bit picture.
void to_float(host_picture& picture, csSDK_int32 width, csSDK_int32 height)
{
    std::vector<char> converted(picture.pixels.size() * 4);
    auto* const floats = reinterpret_cast<float*>(converted.data());
    ConvertFrom8uTo32f(reinterpret_cast<unsigned char const*>(picture.pixels.data()), floats, width, height);
    ConvertFromBGRA32fToVUYA32f(floats, width, height);
    picture = {PrPixelFormat_VUYA_4444_32f, width * 16, std::move(converted)};
}

} // namespace

prSuiteError media_export::render(csSDK_int64 frame, SequenceRender_ParamsRec const& request, host_picture& picture)
{
    csSDK_int32 const row = request.inWidth * stand_in::bytes_per_pixel;
    picture.format = PrPixelFormat_BGRA_4444_8u;
    picture.row_bytes = row;
    picture.pixels.resize(static_cast<std::size_t>(row) * static_cast<std::size_t>(request.inHeight));
    auto* const bottom = reinterpret_cast<unsigned char*>(picture.pixels.data());
    stand_in::picture_view const view{stand_in::pixel_layout::bgra, request.inWidth, request.inHeight,
                                      bottom + std::ptrdiff_t{row} * (request.inHeight - 1), -std::ptrdiff_t{row}};
    if (clip_.draw(frame, view))
        last_ = picture;
    else if (last_.pixels.size() == picture.pixels.size())
        picture = last_;
    if (request.inRequestedPixelFormatArray[0] == PrPixelFormat_VUYA_4444_32f)
        to_float(picture, request.inWidth, request.inHeight);
    return suiteError_NoError;
}

prSuiteError media_export::audio(PrAudioSample first, csSDK_uint32 count, float** channels)
{
    clip_.read_audio(first, static_cast<int>(count), channels);
    return suiteError_NoError;
}

export_settings settings_for(stand_in::source const& clip, csSDK_uint32 codec, bool with_audio)
{
    auto const video = clip.video();
    auto const frames = clip.frame_count();
    if (!frames)
        throw std::runtime_error("it has no end; only a clip of known length can be exported");
    export_settings s;
    s.codec = codec;
    s.width = video.width;
    s.height = video.height;
    s.ticks_per_frame = stand_in::frame_ticks(video.rate);
    s.field_type = field_type(video.fields);
    s.pixel_aspect = {video.pixel_aspect_n, video.pixel_aspect_d};
    s.duration = *frames * s.ticks_per_frame;
    auto const audio = clip.audio();
    s.audio = with_audio && audio;
    if (s.audio) {
        s.channel_type = channel_type(audio->channels);
        s.sample_rate = audio->rate;
    }
    return s;
}

} // namespace quillo::sdk_file
