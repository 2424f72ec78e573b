// quillo doctor: looks at everything that may stand between a host and its receivers, and says what to do about it.
#include "publisher/gst_ptr.h"
#include "publisher/log.h"
#include "tools/quillo/command.h"
#include "tools/quillo/doctor/finding.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>

namespace quillo {

namespace {

using doctor::state;

constexpr std::array<char const*, 3> words{"good", "note", "bad"};
constexpr std::array<char const*, 3> colours{"\033[32m", "\033[33m", "\033[31m"};

bool in_colour() { return ::isatty(STDOUT_FILENO) && !std::getenv("NO_COLOR"); }

void print(doctor::finding const& one)
{
    auto const how = static_cast<std::size_t>(one.how);
    std::string word = words[how];
    word.resize(5, ' ');
    std::string check = one.check;
    check.resize(14, ' ');
    if (in_colour())
        word = colours[how] + word + "\033[0m";
    std::cout << word << ' ' << check << ' ' << one.what << '\n';
    if (!one.remedy.empty())
        std::cout << std::string(21, ' ') << "-> " << one.remedy << '\n';
    std::cout << std::flush;
}

int examine(bool as_json)
{
    log::set_level(log::level::error);
    doctor::findings all;
    auto const add = [&](doctor::findings const& found) {
        for (auto const& one : found)
            if (!as_json)
                print(one);
        all.insert(all.end(), found.begin(), found.end());
    };
    publisher::configuration configuration;
    add(doctor::configuration_file(configuration));
    add(doctor::folder());
    add(doctor::shared_memory());
    add(doctor::running_publisher(configuration));
    add(doctor::ports(configuration));
    add(doctor::firewall(configuration));
    add(doctor::interfaces(configuration));
    add(doctor::names_on_the_network(configuration));
    add(doctor::clock());
    gst_init(nullptr, nullptr);
    add(doctor::plug_ins());
    add(doctor::encoder(configuration));
    add(doctor::loop());

    bool const good = std::none_of(all.begin(), all.end(), [](auto const& one) { return one.how == state::bad; });
    if (as_json) {
        auto list = nlohmann::json::array();
        for (auto const& one : all)
            list.push_back({{"check", one.check},
                            {"state", words[static_cast<std::size_t>(one.how)]},
                            {"what", one.what},
                            {"remedy", one.remedy}});
        nlohmann::json const report = {{"version", QUILLO_VERSION}, {"good", good}, {"findings", list}};
        std::cout << report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    }
    return good ? exit_ok : exit_failure;
}

} // namespace

void add_doctor(CLI::App& app, int& exit_code)
{
    auto const as_json = std::make_shared<bool>(false);
    CLI::App* const command =
        app.add_subcommand("doctor", "Look for what stands between a host and its receivers, and say what to do.");
    command->add_flag("--json", *as_json, "as a JSON object");
    command->footer("Exit code 0 when nothing is bad, 1 otherwise.");
    command->callback([as_json, &exit_code] { exit_code = examine(*as_json); });
}

} // namespace quillo
