// A host that records every call of its suites, with arguments and thread, in the call log. One at a time.
#pragma once

#include <functional>

#include "host/adapter.h"
#include "tests/support/recording_sender/call_log.h"

namespace quillo::test {

// Ticks of a second as the host application counts them.
inline constexpr PrTime host_ticks_per_second = 254016000000;

class fake_host
{
  public:
    fake_host();
    ~fake_host();
    fake_host(fake_host const&) = delete;
    fake_host& operator=(fake_host const&) = delete;

    static fake_host& current();

    // The record that a module is handed.
    piSuitesPtr suites();

    // Knobs; to be set while no clock thread runs. The functions are called inside the suite's function.
    csSDK_uint32 app_code = 0x5050726F;
    PrTime ticks_per_second = host_ticks_per_second;
    bool has_audio_suite = true;
    prSuiteError set_up_result = 0;
    std::function<void()> on_get_basic;  // may throw
    std::function<void()> on_get_ticks;  // may throw
    std::function<void()> on_set_up;     // [clock thread]
    std::function<void()> on_stop_audio; // [clock thread]
    // Delivers a block. [clock thread] As it comes: block n holds 1000 * channel + n in every sample, from time
    // n * 2540160000 on.
    std::function<prSuiteError(float** channels, csSDK_uint32 samples, PrTime& time)> on_pull;
    std::function<void(void* context, PrTime step)> on_clock; // [clock thread]

    // What the plug-in must have provided for: channels and samples of the player set up.
    int channels_expected = 2;

    // The playback clock's callback; logs "clock(context, step)".
    static void clock(void* context, PrTime step);

  private:
    piSuites legacy{};
    PlugUtilFuncs utilities{};
};

} // namespace quillo::test
