#include "tools/stand_in_host/transmitter.h"
#include "tools/stand_in_host/suites/suites.h"

#include <atomic>
#include <cstring>

namespace quillo::stand_in {

namespace {

constexpr std::size_t most_transmitters = 16;
constexpr int most_modes = 64; // a plug-in that offers more goes on for ever

void require(tmResult result, char const* call)
{
    if (result != host::success)
        throw module_failure(std::string("the module's ") + call + " answered " + std::to_string(result));
}

std::string utf8(char16_t const* text, std::size_t limit)
{
    std::string result;
    for (std::size_t k = 0; k < limit && text[k] != 0; ++k) {
        char32_t c = text[k];
        if (c >= 0xD800 && c < 0xDC00 && k + 1 < limit)
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++k] - 0xDC00u);
        if (c < 0x80) {
            result += static_cast<char>(c);
        } else if (c < 0x800) {
            result += static_cast<char>(0xC0 | c >> 6);
            result += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            if (c < 0x10000) {
                result += static_cast<char>(0xE0 | c >> 12);
            } else {
                result += static_cast<char>(0xF0 | c >> 18);
                result += static_cast<char>(0x80 | (c >> 12 & 0x3F));
            }
            result += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            result += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return result;
}

} // namespace

transmitter::transmitter(module const& from_, host_state& state_, int index) : from(from_), state(state_)
{
    parameters.inPluginIndex = index;
    parameters.piSuites = legacy_suites();
    tmResult const result = call_module("Startup", from.functions().Startup, &parameters, &info.record);
    if (result != host::success && result != host::one_more)
        require(result, "Startup");
    another_follows = result == host::one_more;
}

transmitter::~transmitter()
{
    try {
        call_module("Shutdown", from.functions().Shutdown, &parameters);
    } catch (module_failure const& failure) {
        state.log.breach(failure.what());
    }
}

std::vector<std::unique_ptr<transmitter>> start_transmitters(module const& from, host_state& state)
{
    std::vector<std::unique_ptr<transmitter>> started;
    do
        started.push_back(std::make_unique<transmitter>(from, state, static_cast<int>(started.size())));
    while (started.back()->more_follow() && started.size() < most_transmitters);
    return started;
}

std::string transmitter::display_name() const
{
    // The name stands at an odd address.
    std::array<char16_t, 256> name{};
    static_assert(sizeof name == sizeof info.record.outDisplayName);
    std::memcpy(name.data(), &info.record.outDisplayName, sizeof name);
    return utf8(name.data(), name.size());
}

bool transmitter::needs_reset()
{
    prBool reset = kPrFalse;
    call_module("NeedsReset", from.functions().NeedsReset, static_cast<tmStdParms const*>(&parameters), &reset);
    return reset != kPrFalse;
}

template <typename Function, typename... Arguments>
tmResult transmit_instance::call(char const* name, Function function, Arguments... arguments)
{
    return call_module(name, function, static_cast<tmStdParms const*>(&of.parameters),
                       static_cast<tmInstance const*>(&record), arguments...);
}

transmit_instance::transmit_instance(transmitter& of_, video_description const& video,
                                     std::optional<audio_description> const& audio)
    : of(of_)
{
    static std::atomic<int> made{0};
    record.inInstanceID = ++made;
    record.inTimelineID = record.inInstanceID;
    record.inPlayID = record.inInstanceID;
    record.inHasAudio = audio ? kPrTrue : kPrFalse;
    if (audio) {
        record.inNumChannels = static_cast<csSDK_uint32>(audio->channels);
        for (std::size_t k = 0; k < audio->labels.size(); ++k)
            record.inChannelLabels[k] = static_cast<PrAudioChannelLabel>(audio->labels[k]);
        record.inAudioSampleType = kPrAudioSampleType_32BitFloat;
        record.inAudioSampleRate = static_cast<float>(audio->rate);
    }
    record.inHasVideo = kPrTrue;
    record.inVideoWidth = video.width;
    record.inVideoHeight = video.height;
    record.inVideoPARNum = video.pixel_aspect_n;
    record.inVideoPARDen = video.pixel_aspect_d;
    record.inVideoFrameRate = frame_ticks(video.rate);
    record.inVideoFieldType = field_type(video.fields);
    require(call_module("CreateInstance", of.from.functions().CreateInstance,
                        static_cast<tmStdParms const*>(&of.parameters), &record),
            "CreateInstance");
}

transmit_instance::~transmit_instance()
{
    try {
        deactivate_and_dispose();
    } catch (module_failure const& failure) {
        of.state.log.breach(failure.what());
    }
}

void transmit_instance::deactivate_and_dispose()
{
    if (clock_runs)
        stop_clock();
    if (active)
        activate(false, false);
    call_module("DisposeInstance", of.from.functions().DisposeInstance, static_cast<tmStdParms const*>(&of.parameters),
                &record);
}

std::vector<video_mode> transmit_instance::video_modes()
{
    // Later releases append to the record.
    struct longer_mode
    {
        tmVideoMode record{};
        std::array<char, 256> later{};
    };
    std::vector<video_mode> modes;
    for (int index = 0; index < most_modes; ++index) {
        longer_mode mode;
        tmVideoMode& m = mode.record;
        tmResult const result = call("QueryVideoMode", of.from.functions().QueryVideoMode, csSDK_int32{index}, &m);
        modes.push_back(
            {m.outWidth, m.outHeight, m.outPARNum, m.outPARDen, m.outFieldType, m.outPixelFormat, m.outLatency});
        if (modes.back().latency != modes.front().latency)
            of.state.log.breach("video modes with different latencies");
        if (result != host::one_more)
            return modes;
    }
    of.state.log.breach("QueryVideoMode without an end");
    return modes;
}

std::optional<audio_mode> transmit_instance::offered_audio()
{
    tmAudioMode mode{};
    tmResult const result = call("QueryAudioMode", of.from.functions().QueryAudioMode, csSDK_int32{0}, &mode);
    if (result != host::success && result != host::one_more)
        return std::nullopt;
    return audio_mode{mode.outAudioSampleRate, mode.outMaxBufferSize, mode.outNumChannels};
}

void transmit_instance::activate(bool audio, bool video)
{
    call("ActivateDeactivate", of.from.functions().ActivateDeactivate, PrActivationEvent_PlayerActivated, prBool{audio},
         prBool{video});
    active = audio || video;
}

void transmit_instance::start_clock(tmPlaybackClock const& clock)
{
    clock_runs = true;
    require(call("StartPlaybackClock", of.from.functions().StartPlaybackClock, &clock), "StartPlaybackClock");
}

void transmit_instance::stop_clock()
{
    clock_runs = false;
    call("StopPlaybackClock", of.from.functions().StopPlaybackClock);
}

void transmit_instance::push(PPixHand frame, PrTime time, pmPlayMode mode)
{
    tmLabeledFrame const labeled{frame, nullptr};
    tmPushVideo const pushed{time, mode, kPrRenderQuality_High, &labeled, 1};
    call("PushVideo", of.from.functions().PushVideo, &pushed);
}

} // namespace quillo::stand_in
