// The names of the host's interface that are not published: header files, constants, suite members. Everything else in
// the project uses published names, so that a difference from the vendor's headers is put right here.
#pragma once

#include <PrSDKAppInfoSuite.h>
#include <PrSDKAudioSuite.h>
#include <PrSDKPPixSuite.h>
#include <PrSDKPixelFormat.h>
#include <PrSDKPlayModule.h>
#include <PrSDKPlayModuleAudioSuite.h>
#include <PrSDKPlugSuites.h>
#include <PrSDKStreamLabel.h>
#include <PrSDKStructs.h>
#include <PrSDKTimeSuite.h>
#include <PrSDKTransmit.h>
#include <PrSDKTypes.h>
#include <SPBasic.h>

namespace quillo::host {

inline constexpr auto success = static_cast<tmResult>(0);
inline constexpr auto one_more = static_cast<tmResult>(1);
inline constexpr auto failure = static_cast<tmResult>(-1);

inline constexpr auto stopped = static_cast<pmPlayMode>(0);
inline constexpr auto playing = static_cast<pmPlayMode>(1);
inline constexpr auto scrubbing = static_cast<pmPlayMode>(2);

inline constexpr int app_code_selector = 0;

using playmod_audio_suite = PrSDKPlayModuleAudioSuite;
using audio_settings = pmAudioSettings;
using audio_range = pmAudioRange;

// The suite's 2nd function. Anything but 0: no player could be set up.
inline prSuiteError set_up_audio(playmod_audio_suite const& suite, PrPlayID player, bool is_scrubbing,
                                 float sample_rate, csSDK_int32 block)
{
    audio_settings const settings{sample_rate, block, {}};
    return suite.InitPluginAudio(player, is_scrubbing, &settings);
}

// The 3rd. Ticks; the player runs from start within [in, out).
inline prSuiteError start_audio(playmod_audio_suite const& suite, PrPlayID player, PrTime in, PrTime out, PrTime start,
                                prBool loop, float speed)
{
    audio_range const range{in, out, start, loop};
    return suite.StartAudio(player, &range, nullptr, speed);
}

// The 11th. Fills block samples in each of the channel buffers; 0: done, and time is that of the first sample.
inline prSuiteError next_audio(playmod_audio_suite const& suite, PrPlayID player, float** channels, csSDK_uint32 block,
                               PrTime& time)
{
    return suite.GetNextAudioBuffer2(player, nullptr, channels, block, &time);
}

// The 9th.
inline prSuiteError stop_audio(playmod_audio_suite const& suite, PrPlayID player) { return suite.StopAudio(player); }

} // namespace quillo::host
