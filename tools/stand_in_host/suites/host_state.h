// What the suite functions, which get no context of their own, work on.
#pragma once

#include "tools/stand_in_host/audio_output.h"
#include "tools/stand_in_host/frame_ledger.h"
#include "tools/stand_in_host/journal.h"

#include <cstdint>
#include <map>
#include <mutex>

namespace quillo::stand_in {

// One at a time in a process, and for as long as a module is loaded.
class host_state
{
  public:
    host_state(std::uint32_t app_code, int row_padding);
    host_state(host_state const&) = delete;
    host_state& operator=(host_state const&) = delete;
    ~host_state();

    static host_state& current(); // [any thread, while one lives]

    journal log;
    frame_ledger frames;
    std::uint32_t const app_code;
    bool offers_audio = true; // whether the playmod audio suite can be had

    // Players whose sound the module may pull, by play ID. The caller owns them and takes them out again.
    void add_player(PrPlayID id, audio_output* player);
    void remove_player(PrPlayID id);
    audio_output* player(PrPlayID id);

  private:
    std::mutex mutex;
    std::map<PrPlayID, audio_output*> players;
};

} // namespace quillo::stand_in
