#include "tools/quillo/command.h"
#include "tools/quillo/module_path.h"
#include "tools/quillo/play_options.h"

#include <charconv>
#include <memory>

namespace quillo {

namespace {

using namespace stand_in;

// Options as they are typed.
struct typed
{
    play_options options;
    std::string app = "premiere";
    std::string audio = "on";
    std::string format;
    std::string pattern;
    std::string size = "1920x1080";
    std::string rate = "59.94";
    std::string fields = "progressive";
    int channels = 2;
    double speed = 0; // 0: none given
};

bool parse_int(std::string_view text, int& value)
{
    auto const result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

bool parse_pair(std::string const& text, char separator, int& first, int& second)
{
    auto const at = text.find(separator);
    return at != std::string::npos && parse_int(std::string_view(text).substr(0, at), first) &&
           parse_int(std::string_view(text).substr(at + 1), second);
}

frame_rate parse_rate(std::string const& text)
{
    int n = 0;
    int d = 1;
    if (!parse_pair(text, '/', n, d)) {
        double const value = std::strtod(text.c_str(), nullptr);
        n = static_cast<int>(value * 1000 + 0.5);
        d = 1000;
    }
    if (n <= 0 || d <= 0 || n / d > 1000)
        throw CLI::ValidationError("--rate", text + " is no frame rate; try 25, 59.94 or 30000/1001");
    return nearest_common_rate(n, d);
}

pattern_settings parse_pattern(typed const& t)
{
    pattern_settings settings;
    settings.kind = t.pattern == "alpha"   ? pattern_kind::alpha
                    : t.pattern == "flash" ? pattern_kind::flash
                                           : pattern_kind::bars;
    if (!parse_pair(t.size, 'x', settings.width, settings.height) || settings.width < 1 || settings.height < 1 ||
        settings.width > 16384 || settings.height > 16384)
        throw CLI::ValidationError("--size", t.size + " is no size; try 1920x1080");
    settings.rate = parse_rate(t.rate);
    settings.fields = t.fields == "upper"   ? field_order::upper_first
                      : t.fields == "lower" ? field_order::lower_first
                                            : field_order::progressive;
    settings.channels = t.options.player.audio ? t.channels : 0;
    return settings;
}

play_options finish(typed& t)
{
    play_options options = t.options;
    options.app = *find_host_application(t.app);
    options.player.audio = t.audio == "on";
    if (!t.format.empty())
        options.player.only = t.format == "bgra" ? pixel_layout::bgra : pixel_layout::vuya;
    if (options.player.out_s && *options.player.out_s <= options.player.in_s.value_or(0))
        throw CLI::ValidationError("--out", "not behind --in");
    if (t.speed != 0)
        options.player.speed = t.speed;
    else if (options.player.scrub)
        options.player.speed = 4;
    if (options.inputs.empty()) {
        t.options.player.audio = options.player.audio;
        options.pattern = parse_pattern(t);
    } else if (!t.pattern.empty()) {
        throw CLI::ValidationError("--pattern", "not together with a file");
    }
    options.row_padding = options.row_padding / 16 * 16;
    if (options.module.empty())
        options.module = default_module();
    return options;
}

std::string app_list()
{
    std::string list;
    for (host_application const& app : host_applications())
        list += (list.empty() ? "" : ", ") + std::string(app.key);
    return list;
}

} // namespace

void add_play(CLI::App& app, int& exit_code)
{
    auto const t = std::make_shared<typed>();
    play_options& options = t->options;
    CLI::App* const play = app.add_subcommand(
        "play", "Play files, addresses or a test pattern through the plug-in module, as a host application does.");
    play->footer("Keys: space pauses and goes on, the arrows step, q quits.");

    play->add_option("input", options.inputs, "files or addresses, played one after the other; none: a pattern")
        ->option_text("FILE|URL ...");
    play->add_option("--app", t->app, "the application to present as: " + app_list())
        ->check([](std::string const& key) { return find_host_application(key) ? "" : "one of " + app_list(); })
        ->option_text("NAME [premiere]");
    play->add_flag("--loop", options.loop, "begin again at the end");
    play->add_option("--in", options.player.in_s, "where to begin")->option_text("SECONDS");
    play->add_option("--out", options.player.out_s, "where to end")->option_text("SECONDS");
    play->add_option("--speed", t->speed, "below 0 backwards")
        ->check([](std::string const& text) { return std::strtod(text.c_str(), nullptr) != 0 ? "" : "not 0"; })
        ->option_text("FACTOR [1]");
    play->add_flag("--scrub", options.player.scrub, "move to and fro as a hand on the playhead does, at --speed or 4");
    play->add_option("--audio", t->audio, "sound")->check(CLI::IsMember({"on", "off"}))->option_text("on|off [on]");
    play->add_option("--format", t->format, "offer the plug-in this pixel format only")
        ->check(CLI::IsMember({"vuya", "bgra"}))
        ->option_text("vuya|bgra");
    play->add_option("--frames", options.player.push_limit, "end after so many frames")
        ->check([](std::string const& text) { return std::strtod(text.c_str(), nullptr) >= 1 ? "" : "at least 1"; })
        ->option_text("N");

    std::string const group = "Pattern";
    play->add_option("--pattern", t->pattern, "bars, alpha (bars with an alpha ramp) or flash (for measuring)")
        ->check(CLI::IsMember({"bars", "alpha", "flash"}))
        ->group(group)
        ->option_text("NAME [bars]");
    play->add_option("--size", t->size, "")->group(group)->option_text("WxH [1920x1080]");
    play->add_option("--rate", t->rate, "frames a second")->group(group)->option_text("RATE [59.94]");
    play->add_option("--fields", t->fields, "field order that the host states")
        ->check(CLI::IsMember({"progressive", "upper", "lower"}))
        ->group(group)
        ->option_text("ORDER [progressive]");
    play->add_option("--channels", t->channels, "of sound")
        ->check(CLI::Range(1, max_channels))
        ->group(group)
        ->option_text("N [2]");

    std::string const developer = "For developers";
    play->add_option("--module", options.module, "the plug-in module")->group(developer)->option_text("PATH");
    play->add_flag("--json", options.json, "statistics on standard output at the end")->group(developer);
    play->add_flag(
            "--script", options.script,
            "read commands from standard input, one a line: pause, play, step N, seek SECONDS, speed FACTOR, quit")
        ->group(developer);
    play->add_option("--row-padding", options.row_padding, "unused bytes behind each row of a frame, in steps of 16")
        ->check(CLI::Range(0, 65536))
        ->group(developer)
        ->option_text("BYTES");

    play->callback([t, &exit_code] { exit_code = run_play(finish(*t)); });
}

} // namespace quillo
