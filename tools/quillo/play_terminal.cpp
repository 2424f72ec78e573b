#include "tools/quillo/play_terminal.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <iterator>
#include <optional>
#include <poll.h>
#include <sstream>
#include <string_view>
#include <unistd.h>

namespace quillo {

namespace {

using stand_in::command;

int wake_pipe[2] = {-1, -1}; // written to by the signal handler and, with a 0, at the end

void on_signal(int number)
{
    char const byte = 1;
    [[maybe_unused]] auto const written = write(wake_pipe[1], &byte, 1);
    std::signal(number, SIG_DFL);
}

std::optional<command> parse(std::string const& line)
{
    static constexpr struct
    {
        char const* word;
        command::kind kind;
        bool has_value;
    } known[] = {{"toggle", command::toggle, false}, {"pause", command::pause, false}, {"play", command::play, false},
                 {"step", command::step, true},      {"seek", command::seek, true},    {"speed", command::speed, true},
                 {"quit", command::quit, false}};
    std::istringstream in(line);
    std::string word;
    double value = 0;
    in >> word;
    bool const has_value = static_cast<bool>(in >> value);
    for (auto const& k : known)
        if (word == k.word && has_value == k.has_value)
            return command{k.kind, value};
    return std::nullopt;
}

} // namespace

play_terminal::play_terminal(bool script_, std::function<void(command)> obey_)
    : obey(std::move(obey_)), script(script_), keys(!script && isatty(STDIN_FILENO) != 0),
      has_line(isatty(STDERR_FILENO) != 0)
{
    if (pipe2(wake_pipe, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe to be had");
    std::signal(SIGINT, on_signal);
    std::signal(SIGTERM, on_signal);
    if (keys && tcgetattr(STDIN_FILENO, &before) == 0) {
        termios raw = before;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        tcsetattr(STDIN_FILENO, TCSANOW, &raw);
    }
    thread = std::thread(&play_terminal::listen, this);
}

play_terminal::~play_terminal()
{
    char const byte = 0;
    [[maybe_unused]] auto const written = write(wake_pipe[1], &byte, 1);
    thread.join();
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    if (keys)
        tcsetattr(STDIN_FILENO, TCSANOW, &before);
    if (has_line && !shown.empty())
        std::fputc('\n', stderr);
    close(wake_pipe[0]);
    close(wake_pipe[1]);
}

void play_terminal::listen()
{
    bool input = script || keys;
    while (true) {
        pollfd waiting[2] = {{wake_pipe[0], POLLIN, 0}, {input ? STDIN_FILENO : -1, POLLIN, 0}};
        if (poll(waiting, 2, -1) < 0)
            continue;
        if (waiting[0].revents != 0) {
            char byte = 0;
            if (read(wake_pipe[0], &byte, 1) == 1 && byte == 0)
                return;
            got_signal = true;
            obey({command::quit});
        }
        if (waiting[1].revents != 0)
            input = read_input();
    }
}

bool play_terminal::read_input()
{
    char bytes[256];
    ssize_t const got = read(STDIN_FILENO, bytes, sizeof bytes);
    if (got <= 0)
        return false;
    if (keys) {
        handle_keys({bytes, static_cast<std::size_t>(got)});
        return true;
    }
    pending.append(bytes, static_cast<std::size_t>(got));
    for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
        std::string const line = pending.substr(0, end);
        pending.erase(0, end + 1);
        if (auto const c = parse(line))
            obey(*c);
        else if (!line.empty())
            say("not understood: " + line);
    }
    return true;
}

void play_terminal::handle_keys(std::string_view typed)
{
    static constexpr struct
    {
        std::string_view bytes;
        command means;
    } keys_known[] = {{" ", {command::toggle}},       {"q", {command::quit}},          {"\033[C", {command::step, 1}},
                      {"\033OC", {command::step, 1}}, {"\033[D", {command::step, -1}}, {"\033OD", {command::step, -1}}};
    // A key that is held down comes several times in one piece.
    while (!typed.empty()) {
        auto const* const key = std::find_if(std::begin(keys_known), std::end(keys_known),
                                             [&](auto const& one) { return typed.starts_with(one.bytes); });
        if (key != std::end(keys_known))
            obey(key->means);
        typed.remove_prefix(key == std::end(keys_known) ? 1 : key->bytes.size());
    }
}

void play_terminal::show(std::string const& line)
{
    if (!has_line)
        return;
    std::lock_guard const lock(output);
    shown = line;
    std::fprintf(stderr, "\r%s\033[K", line.c_str());
    std::fflush(stderr);
}

void play_terminal::say(std::string const& text)
{
    std::lock_guard const lock(output);
    std::fprintf(stderr, "%s%s\n%s", has_line ? "\r\033[K" : "", text.c_str(), has_line ? shown.c_str() : "");
    std::fflush(stderr);
}

} // namespace quillo
