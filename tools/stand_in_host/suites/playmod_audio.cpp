#include "tools/stand_in_host/suites/host_state.h"
#include "tools/stand_in_host/suites/suites.h"

#include <array>
#include <cstddef>

namespace quillo::stand_in {

namespace {

constexpr auto not_valid = static_cast<prSuiteError>(suiteError_IDNotValid);

audio_output* find(PrPlayID id)
{
    audio_output* const player = host_state::current().player(id);
    if (player == nullptr)
        host_state::current().log.breach("audio of a player that does not exist");
    return player;
}

prSuiteError set_up(PrPlayID id, prBool scrubbing, host::audio_settings const* settings)
{
    audio_output* const player = find(id);
    return player != nullptr ? player->set_up(scrubbing != kPrFalse, *settings) : not_valid;
}

prSuiteError start(PrPlayID id, host::audio_range const* range, void*, float speed)
{
    audio_output* const player = find(id);
    return player != nullptr ? player->start(*range, speed) : not_valid;
}

prSuiteError stop(PrPlayID id)
{
    audio_output* const player = find(id);
    return player != nullptr ? player->stop() : not_valid;
}

prSuiteError next_with_time(PrPlayID id, float**, float** buffers, unsigned count, PrTime* time)
{
    audio_output* const player = find(id);
    return player != nullptr ? player->pull(buffers, count, time) : not_valid;
}

prSuiteError next(PrPlayID id, float** inputs, float** buffers, unsigned count)
{
    return next_with_time(id, inputs, buffers, count, nullptr);
}

prSuiteError unknown()
{
    host_state::current().log.breach("an unknown function of the playmod audio suite");
    return static_cast<prSuiteError>(suiteError_NotImplemented);
}

} // namespace

// Filled by position: not all of the suite's names are public.
void const* playmod_audio_suite()
{
    using entry = void (*)();
    static std::array<entry, 11> const table = [] {
        std::array<entry, 11> t;
        t.fill(reinterpret_cast<entry>(unknown));
        t[1] = reinterpret_cast<entry>(set_up);
        t[2] = reinterpret_cast<entry>(start);
        t[8] = reinterpret_cast<entry>(stop);
        t[9] = reinterpret_cast<entry>(next);
        t[10] = reinterpret_cast<entry>(next_with_time);
        return t;
    }();
    return table.data();
}

} // namespace quillo::stand_in
