// quillo list: the sources on the network, as text or JSON.
#include "publisher/discovery/discovery.h"
#include "tools/quillo/command.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <memory>

namespace quillo {

namespace {

struct list_settings
{
    bool json = false;
    bool first = false;
    double seconds = 2;
};

std::string text_of(discovery::found const& source, char const* key)
{
    auto const entry = source.txt.find(key);
    return entry == source.txt.end() ? std::string{} : entry->second;
}

// For a receiver on this machine: IPv6 in brackets, its zone escaped.
std::string url(discovery::found const& source, std::string address)
{
    if (auto const zone = address.find('%'); zone != std::string::npos)
        address.insert(zone + 1, "25");
    if (address.find(':') != std::string::npos)
        address = "[" + address + "]";
    std::string path = text_of(source, "path");
    if (!path.starts_with('/'))
        path.insert(path.begin(), '/');
    return (text_of(source, "tls") == "1" ? "rtsps://" : "rtsp://") + address + ":" + std::to_string(source.port) +
           path;
}

nlohmann::json to_json(discovery::found const& source)
{
    auto urls = nlohmann::json::array();
    for (auto const& address : source.addresses)
        urls.push_back(url(source, address));
    return {{"name", source.name}, {"host", source.host},           {"port", source.port},
            {"txt", source.txt},   {"addresses", source.addresses}, {"urls", urls}};
}

// Anybody on the network can put control characters into a name; none of them shall reach a terminal.
std::string printable(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
    return text;
}

void print(discovery::found const& source)
{
    std::cout << printable(source.name) << "  (" << printable(source.host) << ")\n";
    for (auto const& address : source.addresses)
        std::cout << "    " << printable(url(source, address)) << '\n';
}

void list(list_settings const& settings)
{
    auto const sources =
        discovery::browse(std::chrono::milliseconds{static_cast<std::int64_t>(settings.seconds * 1000)},
                          settings.first ? discovery::until::first_is_found : discovery::until::time_is_up);
    if (settings.json) {
        auto all = nlohmann::json::array();
        for (auto const& source : sources)
            all.push_back(to_json(source));
        // Names come from the network, and need not be UTF-8.
        std::cout << all.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
        return;
    }
    for (auto const& source : sources)
        print(source);
    if (sources.empty())
        std::cerr << "quillo list: no source answered within " << settings.seconds << " s\n";
}

} // namespace

void add_list(CLI::App& app, int& exit_code)
{
    auto const settings = std::make_shared<list_settings>();
    CLI::App* const command = app.add_subcommand("list", "Show the sources on the network with their addresses.");
    command->add_flag("--json", settings->json, "as a JSON array");
    command->add_flag("--first", settings->first, "wait no longer than until a source is found");
    command->add_option("--seconds", settings->seconds, "how long to wait for answers")
        ->capture_default_str()
        ->check(CLI::Range(0.1, 60.0));
    command->callback([=, &exit_code] {
        try {
            list(*settings);
        } catch (std::exception const& error) {
            std::cerr << "quillo list: " << error.what() << '\n';
            exit_code = exit_unavailable;
        }
    });
}

} // namespace quillo
