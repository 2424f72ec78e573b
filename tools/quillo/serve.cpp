#include "publisher/serve.h"

#include "publisher/channel_server.h"
#include "publisher/log.h"
#include "tools/quillo/command.h"

#include <memory>

namespace quillo {

void add_serve(CLI::App& app, int& exit_code)
{
    auto const settings = std::make_shared<publisher::serve_settings>();
    auto const level = std::make_shared<std::string>("info");
    auto const linger = std::make_shared<int>(60);
    CLI::App* const command = app.add_subcommand("serve", "Publish the sources of this user's senders on the network.");
    command->add_option("--port", settings->publishing.rtsp.port, "RTSP port; the next free one if it is taken")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535));
    command->add_option("--bind", settings->publishing.rtsp.address, "address to listen at; \"::\" is every address")
        ->capture_default_str();
    command->add_option("--encoder", settings->publishing.encoder, "H.264 encoder element; empty: the best that works");
    command->add_flag("--on-demand", settings->on_demand, "end when there has been no sender for the time of --linger");
    command->add_option("--linger", *linger, "seconds")->capture_default_str()->check(CLI::NonNegativeNumber);
    command->add_option("--log", *level, "error, warning, info, debug or trace")->capture_default_str();
    command->callback([=, &exit_code] {
        auto const parsed = log::parse_level(*level);
        if (!parsed)
            throw CLI::ValidationError{"--log", "no such level: " + *level};
        log::set_level(*parsed);
        settings->linger = std::chrono::seconds{*linger};
        try {
            publisher::serve(*settings);
            exit_code = exit_ok;
        } catch (std::exception const& error) {
            std::cerr << "quillo serve: " << error.what() << '\n';
            exit_code = exit_failure;
        }
    });
}

} // namespace quillo
