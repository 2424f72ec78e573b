#include "Plugins/Plugins.AdobeCC.Transmit/Quillo_TransmitInstance.h"

#include <cmath>
#include <cstdlib>
#include <iterator>
#include <limits>

#include "Plugins/Plugins.AdobeCC.Transmit/euclid.h"

namespace {

namespace host = quillo::host;

constexpr int kRateDenominators[] = {1000, 1001, 1200};

} // namespace

Quillo_TransmitInstance::Quillo_TransmitInstance(tmInstance const* /*instance*/, SDKSuites const& host_suites,
                                                 void* network_sender)
    : suites(host_suites), sender(network_sender)
{
    suites.time->GetTicksPerSecond(&ticksPerSecond);

    constexpr long long network_units_per_second = 10000000;
    long long const g = quillo::euclid(ticksPerSecond, network_units_per_second);
    long long num = network_units_per_second / g;
    long long den = ticksPerSecond / g;
    if (den >= 1ll << 31) {
        // One halving more than 32 unsigned bits need.
        constexpr long long limit = std::numeric_limits<unsigned>::max();
        long long old_num;
        long long old_den;
        do {
            old_num = num;
            old_den = den;
            num /= 2;
            den /= 2;
        } while (old_num > limit || old_den > limit);
    }
    timeScaleNum = static_cast<int>(num);
    timeScaleDen = static_cast<int>(den);
}

Quillo_TransmitInstance::~Quillo_TransmitInstance() = default;

tmResult Quillo_TransmitInstance::QueryAudioMode(tmStdParms const* /*parms*/, tmInstance const* instance,
                                                 csSDK_int32 /*index*/, tmAudioMode* mode)
{
    mode->outAudioSampleRate = instance->inAudioSampleRate;
    mode->outMaxBufferSize = static_cast<csSDK_uint32>(static_cast<int>(instance->inAudioSampleRate));
    mode->outNumChannels = instance->inNumChannels;
    for (std::size_t channel = 0; channel < std::size(mode->outChannelLabels); ++channel)
        mode->outChannelLabels[channel] = instance->inChannelLabels[channel];
    mode->outLatency = 0;
    return host::success;
}

tmResult Quillo_TransmitInstance::QueryVideoMode(tmStdParms const* /*parms*/, tmInstance const* instance,
                                                 csSDK_int32 index, tmVideoMode* mode)
{
    mode->outLatency = 0;
    if (index < 0 || index > 3)
        return host::success;

    bool const any_size = index >= 2;
    mode->outWidth = any_size ? 0 : instance->inVideoWidth;
    mode->outHeight = any_size ? 0 : instance->inVideoHeight;
    mode->outPARNum = any_size ? 0 : instance->inVideoPARNum;
    mode->outPARDen = any_size ? 0 : instance->inVideoPARDen;
    mode->outFieldType = any_size ? prFieldsAny : instance->inVideoFieldType;
    // The host takes the first that it can serve: 4:4:4 YUV rather than RGB.
    mode->outPixelFormat = index % 2 == 0 ? vuya : bgra;
    return index < 3 ? host::one_more : host::success;
}

tmResult Quillo_TransmitInstance::ActivateDeactivate(tmStdParms const* /*parms*/, tmInstance const* instance,
                                                     PrActivationEvent /*event*/, prBool audio_active,
                                                     prBool video_active)
{
    if (video_active) {
        float const fps = static_cast<float>(ticksPerSecond) / static_cast<float>(instance->inVideoFrameRate);
        float smallest_error = std::numeric_limits<float>::max();
        for (int const denominator : kRateDenominators) {
            // Rounded in float, so that no rate at all, or an endless one, changes nothing.
            float const numerator = std::trunc(fps * static_cast<float>(denominator) + 0.5f);
            float const error = std::abs(numerator / static_cast<float>(denominator) - fps);
            if (error < smallest_error) {
                smallest_error = error;
                frameRateN = static_cast<int>(numerator);
                frameRateD = denominator;
            }
        }
    } else {
        for (FrameBuffer& buffer : buffers) {
            Quillolib_send_send_video(sender, nullptr);
            buffer.release();
        }
    }
    audioActive.store(audio_active != 0, std::memory_order_relaxed);
    videoActive = video_active != 0;
    return host::success;
}

void Quillo_TransmitInstance::FrameBuffer::release()
{
    std::free(data);
    data = nullptr;
    capacity = 0;
}
