// The quillo command: one subcommand a job. A subcommand lives in a file of its own, adds itself to the command line
// with its options, and leaves the exit code of its run in exit_code.
#pragma once

#include "tools/quillo/exit_code.h"

#include <CLI/CLI.hpp>

namespace quillo {

void add_convert(CLI::App& app, int& exit_code);
void add_play(CLI::App& app, int& exit_code);
void add_sdkfile(CLI::App& app, int& exit_code);
void add_serve(CLI::App& app, int& exit_code);
void add_list(CLI::App& app, int& exit_code);
void add_doctor(CLI::App& app, int& exit_code);

} // namespace quillo
