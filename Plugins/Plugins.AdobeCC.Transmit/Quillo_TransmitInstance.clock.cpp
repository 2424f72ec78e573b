#include "Plugins/Plugins.AdobeCC.Transmit/Quillo_TransmitInstance.h"

#include <system_error>
#include <vector>

#include "Plugins/Plugins.AdobeCC.Transmit/steady_time.h"
#include "lib/math/scale.h"

namespace host = quillo::host;
using Processing::Quillo::Plugins::Lib::math::scale;

tmResult Quillo_TransmitInstance::StartPlaybackClock(tmStdParms const* /*parms*/, tmInstance const* instance,
                                                     tmPlaybackClock const* clock)
{
    copies.give({*instance, *clock});
    if (clock_thread.joinable())
        return host::success;

    stopRequested = false;
    try {
        clock_thread = std::thread(&Quillo_TransmitInstance::ThreadProc, this);
    } catch (std::system_error const& error) {
        // The same words on every platform.
        throw std::system_error(error.code(), "thread constructor failed");
    }
    return host::success;
}

tmResult Quillo_TransmitInstance::StopPlaybackClock(tmStdParms const* /*parms*/, tmInstance const* /*instance*/)
{
    if (clock_thread.joinable()) {
        stopRequested = true;
        clock_thread.join();
    }
    copies.give({});
    return host::success;
}

void Quillo_TransmitInstance::ThreadProc()
{
    if (suites.audio && audioActive.load(std::memory_order_relaxed))
        audio_road();
    else
        clock_only_road();
}

// No timer here: the sender holds each audio send until its block is due, and the host's clock follows.
void Quillo_TransmitInstance::audio_road()
{
    auto const& audio = *suites.audio;
    record_copies const& at_start = copies.take();
    int const rate = static_cast<int>(at_start.instance.inAudioSampleRate + 0.5f);
    // Rates that are no multiple of 100 get a block of slightly less than 10 ms; the host's clock counts its samples.
    int const block = rate / 100;
    csSDK_uint32 const host_channels = at_start.instance.inNumChannels;
    int const channels = host_channels > 2 ? static_cast<int>(host_channels) : 2;

    // The player cannot be set up: the host's clock stands still.
    if (host::set_up_audio(audio, at_start.instance.inPlayID, at_start.clock.inPlayMode == host::scrubbing,
                           static_cast<float>(rate), block))
        return;
    host::start_audio(audio, at_start.instance.inPlayID, at_start.clock.inInTime, at_start.clock.inOutTime,
                      at_start.clock.inStartTime, at_start.clock.inLoop, at_start.clock.inSpeed);

    auto const stride = static_cast<std::size_t>(block);
    std::vector<float> samples(static_cast<std::size_t>(channels) * stride);
    std::vector<float*> channel_samples(static_cast<std::size_t>(channels));
    for (std::size_t channel = 0; channel < channel_samples.size(); ++channel)
        channel_samples[channel] = samples.data() + channel * stride;

    while (!stopRequested) {
        SenderAudioFrame frame{};
        frame.sampleRate = rate;
        frame.channelCount = channels;
        frame.sampleCount = block;
        PrTime time = 0;
        // A block that the host cannot deliver is sent as silence; time goes on.
        if (host::next_audio(audio, copies.take().instance.inPlayID, channel_samples.data(),
                             static_cast<csSDK_uint32>(block), time) == 0) {
            frame.timecode = scale(time, timeScaleNum, timeScaleDen);
            frame.data = samples.data();
            frame.channelStride = static_cast<int>(sizeof(float)) * block;
        }
        Quillolib_send_send_audio(sender, &frame);

        tmPlaybackClock const& clock = copies.take().clock;
        clock.inClockCallback(clock.inCallbackContext, ticksPerSecond * block / rate);
    }

    host::stop_audio(audio, copies.take().instance.inPlayID);
}

void Quillo_TransmitInstance::clock_only_road()
{
    constexpr long long tick_ns = 16000000;
    long long last = quillo::steady_time::now_ns();
    if (stopRequested)
        return;
    do {
        quillo::steady_time::sleep_ns(tick_ns);
        long long const now = quillo::steady_time::now_ns();
        float const elapsed_s = static_cast<float>(now - last) / 1000000000.0f;
        tmPlaybackClock const& clock = copies.take().clock;
        clock.inClockCallback(clock.inCallbackContext,
                              static_cast<PrTime>(static_cast<float>(ticksPerSecond) * elapsed_s));
        last = now;
    } while (!stopRequested);
}
