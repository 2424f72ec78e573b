#include "publisher/encoder.h"

#include "publisher/caps.h"
#include "publisher/log.h"
#include "publisher/picture_store.h"
#include "publisher/pipeline.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <semaphore>
#include <sstream>

namespace quillo::publisher {

namespace {

struct candidate
{
    char const* element;
    bool hardware;
    char const* input;
};

// The order is the preference. x264 is only found where the user installed it.
constexpr std::array<candidate, 8> candidates{{
    {"vtenc_h264", true, "NV12"},
    {"vah264enc", true, "NV12"},
    {"vaapih264enc", true, "NV12"},
    {"nvh264enc", true, "NV12"},
    {"qsvh264enc", true, "NV12"},
    {"v4l2h264enc", true, "NV12"},
    {"openh264enc", false, "I420"},
    {"x264enc", false, "I420"},
}};

constexpr int largest_pixels_in_software = 1920 * 1088;
constexpr int smallest_side = 16;
constexpr std::chrono::seconds patience{3};

int frames_a_second(rational rate) { return std::max(1, (rate.n + rate.d - 1) / rate.d); }

// Every encoder names the same wishes differently: no frame held back, no B-frames, a key frame a second.
std::string settings(std::string const& element, int bits, int key_interval)
{
    std::ostringstream text;
    int const kbits = bits / 1000;
    if (element == "openh264enc")
        // With finer quantizers a picture of light noise takes half as much time again, and more than a frame has.
        text << "usage-type=camera complexity=low rate-control=bitrate bitrate=" << bits << " max-bitrate=" << bits * 2
             << " qp-min=22 gop-size=" << key_interval << " enable-frame-skip=false scene-change-detection=false"
             << " background-detection=false adaptive-quantization=false deblocking=off"
             << " multi-thread=2 slice-mode=n-slices num-slices=2";
    else if (element == "x264enc")
        text << "tune=zerolatency speed-preset=ultrafast bframes=0 bitrate=" << kbits << " key-int-max=" << key_interval
             << " vbv-buf-capacity=500 qp-min=22";
    else if (element == "vtenc_h264")
        text << "realtime=true allow-frame-reordering=false bitrate=" << kbits
             << " max-keyframe-interval=" << key_interval;
    else if (element == "vah264enc")
        text << "b-frames=0 rate-control=cbr bitrate=" << kbits << " key-int-max=" << key_interval;
    else if (element == "vaapih264enc")
        text << "max-bframes=0 rate-control=cbr bitrate=" << kbits << " keyframe-period=" << key_interval;
    else if (element == "nvh264enc")
        text << "bframes=0 zerolatency=true rc-mode=cbr bitrate=" << kbits << " gop-size=" << key_interval;
    else if (element == "qsvh264enc")
        text << "b-frames=0 low-latency=true rate-control=cbr bitrate=" << kbits << " gop-size=" << key_interval;
    return text.str();
}

bool works(encoder_choice const& choice)
{
    picture_format format;
    format.width = 320;
    format.height = 192;
    picture_store store;
    store.set_format(format);
    std::counting_semaphore<> units{0};
    pipeline trial{encoding_pipeline(choice, format), [&](GstSample*) { units.release(); },
                   [](std::string const& what) { log::info(what); }};
    constexpr int pictures = 2;
    for (int k = 0; k < pictures; ++k)
        trial.push(restamped(store.black().get(), k * GST_SECOND / 25).get());
    auto const until = std::chrono::steady_clock::now() + patience;
    for (int k = 0; k < pictures; ++k)
        if (!units.try_acquire_until(until))
            return false;
    return true;
}

bool factory_exists(char const* element)
{
    return adopt<object_ptr<GstElementFactory>>(gst_element_factory_find(element)) != nullptr;
}

} // namespace

std::optional<encoder_choice> choose_encoder(std::string const& only)
{
    for (auto const& entry : candidates) {
        if (!only.empty() && only != entry.element)
            continue;
        if (!factory_exists(entry.element))
            continue;
        encoder_choice const choice{entry.element, entry.hardware, entry.input};
        try {
            if (works(choice))
                return choice;
            log::info("encoder ", choice.element, " left out: it encodes nothing here");
        } catch (std::runtime_error const& error) {
            log::info("encoder ", choice.element, " left out: ", error.what());
        }
    }
    return std::nullopt;
}

bool have_opus() { return factory_exists("opusenc") && factory_exists("rtpopuspay"); }

encoded_size size_to_encode(picture_format const& format, bool hardware)
{
    int divisor = 1;
    if (!hardware)
        while (format.width / divisor * (format.height / divisor) > largest_pixels_in_software)
            divisor *= 2;
    auto const even = [&](int side) { return std::max(smallest_side, (side / divisor) & ~1); };
    return {even(format.width), even(format.height)};
}

int bit_rate(encoded_size size, rational rate)
{
    double const pixels_a_second = static_cast<double>(size.width) * size.height * rate.n / rate.d;
    return static_cast<int>(std::clamp(pixels_a_second * 0.16, 1e6, 60e6));
}

std::string encoding_pipeline(encoder_choice const& choice, picture_format const& format)
{
    auto const size = size_to_encode(format, choice.hardware);
    string_ptr const caps{gst_caps_to_string(picture_caps(format).get())};
    std::ostringstream text;
    // Two pictures wait at most; when the encoder is late the older one goes.
    text << "appsrc name=in is-live=true format=time max-buffers=2 max-bytes=0 leaky-type=downstream caps=\""
         << caps.get() << "\" ! ";
    if (size != encoded_size{format.width, format.height})
        text << "videoscale method=nearest-neighbour add-borders=false ! video/x-raw,width=" << size.width
             << ",height=" << size.height << " ! ";
    text << "videoconvert ! video/x-raw,colorimetry=bt709,format=" << choice.input << " ! " << choice.element << ' '
         << settings(choice.element, bit_rate(size, format.rate), frames_a_second(format.rate)) << " ! ";
    if (!choice.hardware)
        text << "video/x-h264,profile=constrained-baseline ! ";
    text << "h264parse config-interval=-1 ! video/x-h264,stream-format=byte-stream,alignment=au ! "
            "appsink name=out sync=false max-buffers=4";
    return text.str();
}

std::string opus_pipeline(int rate)
{
    std::ostringstream text;
    text << "appsrc name=in is-live=true format=time max-buffers=50 max-bytes=0 leaky-type=downstream "
            "caps=\"audio/x-raw,format=F32LE,layout=interleaved,channels=2,rate="
         << rate
         << "\" ! audioconvert ! audioresample ! audio/x-raw,rate=48000,channels=2 ! "
            "opusenc frame-size=10 bitrate=160000 audio-type=restricted-lowdelay ! appsink name=out sync=false "
            "max-buffers=50";
    return text.str();
}

} // namespace quillo::publisher
