// What quillo play was asked for.
#pragma once

#include "tools/stand_in_host/host_application.h"
#include "tools/stand_in_host/pattern/pattern.h"
#include "tools/stand_in_host/player.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quillo {

struct play_options
{
    std::vector<std::string> inputs;
    std::optional<stand_in::pattern_settings> pattern; // where there is no input
    stand_in::host_application app{};
    stand_in::player_settings player;
    bool loop = false;
    bool json = false;
    bool script = false;
    int row_padding = 0;
    std::filesystem::path module;
};

// Plays everything and reports; the exit code of the command.
int run_play(play_options const& options);

} // namespace quillo
