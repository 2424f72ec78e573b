// Keys, signals and the progress line of quillo play.
#pragma once

#include "tools/stand_in_host/player.h"

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <termios.h>
#include <thread>

namespace quillo {

// While this lives, keys and signals become commands: space pauses, the arrows step, q quits; with a script on standard
// input its lines do: "pause", "play", "step N", "seek SECONDS", "speed FACTOR", "quit". Ctrl-C and SIGTERM quit; the
// second one ends the process at once.
class play_terminal
{
  public:
    play_terminal(bool script, std::function<void(stand_in::command)> obey);
    play_terminal(play_terminal const&) = delete;
    play_terminal& operator=(play_terminal const&) = delete;
    ~play_terminal();

    bool interrupted() const { return got_signal; }

    // Replaces the line that stands at the terminal's bottom; nothing where standard error is none.
    void show(std::string const& line);
    // Says something above it.
    void say(std::string const& text);

  private:
    void listen();
    bool read_input();
    void handle_keys(std::string_view typed);

    std::function<void(stand_in::command)> obey;
    bool script;
    bool keys;     // standard input is a terminal
    bool has_line; // standard error is one
    termios before{};
    std::string pending; // of the script
    std::string shown;
    std::mutex output;
    std::atomic<bool> got_signal = false;
    std::thread thread;
};

} // namespace quillo
