#include "publisher/serve.h"

#include "publisher/channel_server.h"
#include "publisher/log.h"
#include "tools/quillo/command.h"

#include <memory>
#include <optional>

namespace quillo {

namespace {

// What was said on the command line; the rest is the configuration file's.
struct serve_arguments
{
    std::string file;
    std::optional<int> port;
    std::optional<std::string> address;
    std::optional<int> page_port;
    std::optional<std::string> encoder;
    std::optional<std::string> level;
    bool json = false;
    bool on_demand = false;
    bool check_only = false;
    int linger = 60;
};

template <class Given, class Member>
void put(std::optional<Given> const& given, Member& into)
{
    if (given)
        into = *given;
}

publisher::configuration_source source_of(serve_arguments const& said)
{
    return {said.file, [said](publisher::configuration& to) {
                put(said.port, to.port);
                put(said.port, to.tls_port);
                put(said.address, to.address);
                put(said.page_port, to.page_port);
                put(said.encoder, to.encoder);
                if (said.level)
                    to.log_level = *log::parse_level(*said.level);
                to.log_json = to.log_json || said.json;
            }};
}

int run(serve_arguments const& said)
{
    auto const configured = source_of(said);
    try {
        if (said.check_only) {
            configured.read();
            std::cout << configured.name() << ": can be used\n";
        } else {
            publisher::serve({configured, said.on_demand, std::chrono::seconds{said.linger}});
        }
        return exit_ok;
    } catch (publisher::bad_configuration const& error) {
        std::cerr << error.what() << '\n';
        return exit_input;
    } catch (std::exception const& error) {
        std::cerr << "quillo serve: " << error.what() << '\n';
        return exit_failure;
    }
}

} // namespace

void add_serve(CLI::App& app, int& exit_code)
{
    auto const said = std::make_shared<serve_arguments>();
    CLI::App* const command = app.add_subcommand("serve", "Publish the sources of this user's senders on the network.");
    command->add_option("--config", said->file,
                        "configuration file; without it " + publisher::default_configuration_file() +
                            ", if it is there");
    command->add_flag("--check-config", said->check_only, "say what is wrong with the configuration file, and end");
    command->add_option("--port", said->port, "RTSP port, 8554 or 8322 by itself; the next free one if it is taken")
        ->check(CLI::Range(0, 65535));
    command->add_option("--bind", said->address, "address to listen at; \"::\", which is every address, by itself");
    command->add_option("--page", said->page_port, "port of the page, 8580 by itself; the next free one if it is taken")
        ->check(CLI::Range(0, 65535));
    command->add_option("--encoder", said->encoder, "H.264 encoder element; the best that works by itself");
    command->add_flag("--on-demand", said->on_demand, "end when there has been no sender for the time of --linger");
    command->add_option("--linger", said->linger, "seconds")->capture_default_str()->check(CLI::NonNegativeNumber);
    command->add_option("--log-level,--log", said->level, log::allowed_levels)
        ->check(CLI::Validator(
            [](std::string& text) {
                return log::parse_level(text) ? std::string{}
                                              : "no such level, but " + std::string{log::allowed_levels};
            },
            "LEVEL"));
    command->add_flag("--log-json", said->json, "log as JSON, one object a line");
    command->callback([said, &exit_code] { exit_code = run(*said); });
}

} // namespace quillo
