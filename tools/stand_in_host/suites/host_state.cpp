#include "tools/stand_in_host/suites/host_state.h"

#include <atomic>
#include <stdexcept>

namespace quillo::stand_in {

namespace {

std::atomic<host_state*> the_current{nullptr};

}

host_state::host_state(std::uint32_t code, int row_padding) : frames(log, row_padding), app_code(code)
{
    host_state* none = nullptr;
    if (!the_current.compare_exchange_strong(none, this))
        throw std::logic_error("a second host in one process");
}

host_state::~host_state() { the_current = nullptr; }

host_state& host_state::current() { return *the_current.load(); }

void host_state::add_player(PrPlayID id, audio_output* player)
{
    std::lock_guard const lock(mutex);
    players[id] = player;
}

void host_state::remove_player(PrPlayID id)
{
    std::lock_guard const lock(mutex);
    players.erase(id);
}

audio_output* host_state::player(PrPlayID id)
{
    std::lock_guard const lock(mutex);
    auto const found = players.find(id);
    return found == players.end() ? nullptr : found->second;
}

} // namespace quillo::stand_in
