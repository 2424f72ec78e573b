// A plug-in of a module, and its instances, as the host drives them. All calls come from one thread.
#pragma once

#include "tools/stand_in_host/module.h"
#include "tools/stand_in_host/negotiation.h"
#include "tools/stand_in_host/source.h"
#include "tools/stand_in_host/suites/host_state.h"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillo::stand_in {

// From Startup to Shutdown.
class transmitter
{
  public:
    // Throws module_failure where the plug-in does not start.
    transmitter(module const& from, host_state& state, int index);
    transmitter(transmitter const&) = delete;
    transmitter& operator=(transmitter const&) = delete;
    ~transmitter();

    std::string display_name() const;
    bool takes_video() const { return info.record.outVideoAvailable != kPrFalse; }
    bool takes_audio() const { return info.record.outAudioAvailable != kPrFalse; }
    bool more_follow() const { return another_follows; }
    bool needs_reset();

  private:
    friend class transmit_instance;

    // Later releases append to the record.
    struct plugin_info
    {
        tmPluginInfo record{};
        std::array<char, 64> later{};
    };

    module const& from;
    host_state& state;
    tmStdParms parameters{};
    plugin_info info;
    bool another_follows = false;
};

// All plug-ins of a module.
std::vector<std::unique_ptr<transmitter>> start_transmitters(module const& from, host_state& state);

// From CreateInstance to DisposeInstance, one for each clip.
class transmit_instance
{
  public:
    transmit_instance(transmitter& of, video_description const& video, std::optional<audio_description> const& audio);
    transmit_instance(transmit_instance const&) = delete;
    transmit_instance& operator=(transmit_instance const&) = delete;
    ~transmit_instance(); // deactivates and disposes

    PrPlayID play_id() const { return record.inPlayID; }

    std::vector<video_mode> video_modes();
    std::optional<audio_mode> offered_audio();

    void activate(bool audio, bool video);
    void start_clock(tmPlaybackClock const& clock);
    void stop_clock();
    void push(PPixHand frame, PrTime time, pmPlayMode mode);

  private:
    template <typename Function, typename... Arguments>
    tmResult call(char const* name, Function function, Arguments... arguments);
    void deactivate_and_dispose();

    transmitter& of;
    tmInstance record{};
    bool active = false;
    bool clock_runs = false;
};

} // namespace quillo::stand_in
