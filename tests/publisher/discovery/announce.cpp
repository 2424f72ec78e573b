// For network_test.py: announces one service, tells on standard output what becomes of it, and withdraws it when
// standard input ends.
#include "publisher/discovery/discovery.h"

#include <cstdlib>
#include <iostream>
#include <mutex>
#include <string>

int main(int argc, char** argv)
{
    if (argc < 4) {
        std::cerr << "usage: discovery_announce MACHINE SOURCE PORT [KEY=VALUE...]\n";
        return 2;
    }
    std::mutex lock;
    auto const say = [&](std::string const& line) {
        std::lock_guard const guard{lock};
        std::cout << line << std::endl;
    };
    quillo::discovery::service service;
    service.name = quillo::discovery::instance_name(argv[1], argv[2]);
    service.port = static_cast<std::uint16_t>(std::atoi(argv[3]));
    for (int at = 4; at < argc; ++at) {
        std::string const text{argv[at]};
        auto const end = text.find('=');
        service.txt[text.substr(0, end)] = end == std::string::npos ? "" : text.substr(end + 1);
    }
    quillo::discovery::announcer announcer{[&](std::string const& line) { say("report " + line); }};
    auto const token = announcer.announce(service, [&](std::string const& name) { say("named " + name); });
    for (std::string line; std::getline(std::cin, line);)
        if (line == "withdraw")
            announcer.withdraw(token);
    return 0;
}
