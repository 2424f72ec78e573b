#include "tools/quillo/exit_code.h"
#include "tools/quillo/play_options.h"
#include "tools/quillo/play_terminal.h"
#include "tools/quillo/publisher_watch.h"
#include "tools/stand_in_host/media/input_error.h"
#include "tools/stand_in_host/media/media.h"

#include <gst/gst.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <iostream>
#include <mutex>

namespace quillo {

namespace {

using namespace stand_in;

std::string clock_text(double time_s)
{
    char text[32];
    auto const tenths = static_cast<long>(std::floor(time_s * 10));
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld.%ld", tenths / 36000, tenths / 600 % 60, tenths / 10 % 60,
                  tenths % 10);
    return text;
}

std::string progress_text(progress const& now, int receivers)
{
    char text[160];
    std::snprintf(text, sizeof text, "%s%s  pushed %ld  late %ld  dropped %ld  receivers %d  clock %+.1f ms",
                  clock_text(now.position_s).c_str(), now.paused ? " paused" : "", now.pushed, now.late, now.dropped,
                  receivers, now.drift_ms);
    return text;
}

std::string receiver_lines(std::string const& name, std::string const& url)
{
    return "\"" + name + "\" is at " + url + "\n" + "  ffplay     ffplay -rtsp_transport tcp " + url + "\n" +
           "  GStreamer  gst-play-1.0 " + url + "\n" + "  VLC        vlc " + url + "\n" + "  unpacked   gst-play-1.0 " +
           url + "/raw\n";
}

// One run of the command: the module is loaded once, each clip gets an instance of its own.
class play_run
{
  public:
    explicit play_run(play_options const& options_)
        : options(options_), state(options.app.code, options.row_padding),
          terminal(options.script, [this](command c) { post(c); })
    {
    }

    int run();

  private:
    void post(command c);
    std::unique_ptr<source> open_next();
    std::size_t clips() const { return options.pattern ? 1 : options.inputs.size(); }
    void load_and_play();
    outcome play_all(transmitter& plug_in, publisher_watch const& watch);
    outcome play_clip(transmitter& plug_in, source& clip, publisher_watch const& watch);
    int report(int code);

    play_options const& options;
    host_state state;
    statistics figures;
    std::size_t next_clip = 0;
    std::unique_ptr<source> opened; // ahead of its turn
    std::optional<std::int64_t> pushes_left = options.player.push_limit;

    std::mutex mutex; // guards the two below
    player* current = nullptr;
    bool quit = false;

    play_terminal terminal;
};

// [terminal's thread]
void play_run::post(command c)
{
    std::lock_guard const lock(mutex);
    quit = quit || c.what == command::quit;
    if (current != nullptr)
        current->post(c);
}

std::unique_ptr<source> play_run::open_next()
{
    if (opened)
        return std::move(opened);
    if (options.pattern)
        return make_pattern(*options.pattern);
    return open_media(options.inputs[next_clip], options.player.audio);
}

outcome play_run::play_clip(transmitter& plug_in, source& clip, publisher_watch const& watch)
{
    player_settings settings = options.player;
    settings.loop = options.loop && clips() == 1;
    settings.push_limit = pushes_left;
    long const pushed_before = figures.pushed;
    player transport(plug_in, state, clip, settings, figures);
    transport.on_progress = [&](progress const& now) { terminal.show(progress_text(now, watch.receivers())); };
    {
        std::lock_guard const lock(mutex);
        if (quit)
            return outcome::quit;
        current = &transport;
    }
    struct forget
    {
        play_run& r;
        ~forget()
        {
            std::lock_guard const lock(r.mutex);
            r.current = nullptr;
        }
    } const at_end{*this};
    outcome const result = transport.run();
    if (pushes_left)
        *pushes_left -= figures.pushed - pushed_before;
    return result;
}

outcome play_run::play_all(transmitter& plug_in, publisher_watch const& watch)
{
    do {
        for (; next_clip < clips(); ++next_clip) {
            std::unique_ptr<source> const clip = open_next();
            outcome const result = play_clip(plug_in, *clip, watch);
            if (result != outcome::ended)
                return result;
            if (pushes_left && *pushes_left <= 0)
                return outcome::ended;
        }
        next_clip = 0;
    } while (options.loop);
    return outcome::ended;
}

void play_run::load_and_play()
{
    // What cannot be played is said before anything appears on the network.
    opened = open_next();
    module const loaded(options.module);
    outcome result = outcome::reset;
    while (result == outcome::reset) {
        auto const plug_ins = start_transmitters(loaded, state);
        publisher_watch const watch(
            [&](std::string const& name, std::string const& url) { terminal.say(receiver_lines(name, url)); });
        result = play_all(*plug_ins.front(), watch);
    }
}

int play_run::report(int code)
{
    auto const breaches = state.log.breaches();
    for (auto const& [what, count] : breaches)
        terminal.say("quillo play: the module broke a rule, " + std::to_string(count) + " times: " + what);
    if (code == exit_ok && !breaches.empty())
        code = exit_failure;
    if (code == exit_ok && terminal.interrupted())
        code = exit_interrupted;
    if (options.json) {
        nlohmann::json document = to_json(figures, state.frames.counts(), state.log);
        document["app"] = options.app.name;
        document["module"] = options.module;
        document["exit_code"] = code;
        std::cout << document.dump(2) << std::endl;
    }
    return code;
}

int play_run::run()
{
    auto failed = [this](std::exception const& error, int code) {
        terminal.say(std::string("quillo play: ") + error.what());
        return code;
    };
    int code = exit_ok;
    try {
        load_and_play();
    } catch (input_error const& error) {
        code = failed(error, error.why == input_error::reason::no_video ? exit_no_video : exit_input);
    } catch (module_error const& error) {
        code = failed(error, exit_module);
    } catch (std::exception const& error) {
        code = failed(error, exit_failure);
    }
    return report(code);
}

} // namespace

int run_play(play_options const& options)
{
    gst_init(nullptr, nullptr);
    return play_run(options).run();
}

} // namespace quillo
