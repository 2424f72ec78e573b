#include "publisher/machine.h"
#include "sender/open/descriptor.h"
#include "sender/open/runtime_folder.h"
#include "tools/quillo/doctor/finding.h"
#include "tools/quillo/publisher_status.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sstream>
#include <sys/mman.h>
#include <thread>

namespace quillo::doctor {

namespace {

using namespace std::chrono_literals;

constexpr auto answer_time = 500ms;
constexpr int sleeps = 40;
constexpr auto sleep_length = 5ms;
constexpr auto lateness_allowed = 5ms;

std::string milliseconds(std::chrono::nanoseconds time)
{
    std::ostringstream text;
    text.precision(3);
    text << std::chrono::duration<double, std::milli>(time).count() << " ms";
    return text.str();
}

} // namespace

findings configuration_file(publisher::configuration& read)
{
    auto const file = publisher::default_configuration_file();
    std::error_code none;
    if (!std::filesystem::exists(file, none))
        return {{"configuration", state::good, "no " + file + ": the defaults hold", ""}};
    try {
        read = publisher::read_configuration(file);
        return {{"configuration", state::good, file + " can be used", ""}};
    } catch (publisher::bad_configuration const& error) {
        findings all;
        std::istringstream lines{error.what()};
        for (std::string one; std::getline(lines, one);)
            all.push_back({"configuration", state::bad, one, "man 5 quillo.conf tells every key"});
        return all;
    }
}

findings folder()
{
    auto const where = open::runtime_folder();
    std::string problem;
    if (open::make_private_folder(where, problem))
        return {{"folder", state::good, where + " is the user's alone", ""}};
    return {{"folder", state::bad, problem,
             "remove it, or chmod 700 it, or let QUILLO_RUNTIME_DIR name another one for host and publisher"}};
}

findings shared_memory()
{
    constexpr off_t picture = 64 << 20;
    open::descriptor const memory{::memfd_create("quillo-doctor", MFD_CLOEXEC | MFD_ALLOW_SEALING)};
    if (memory && ::ftruncate(memory.get(), picture) == 0 && ::fcntl(memory.get(), F_ADD_SEALS, F_SEAL_SHRINK) == 0)
        return {{"shared memory", state::good, "can be had and sealed", ""}};
    return {{"shared memory", state::bad, std::string{"cannot be had: "} + std::strerror(errno),
             "a container or its security profile forbids memfd_create or its seals; allow them"}};
}

findings running_publisher(publisher::configuration const&)
{
    auto const status = publisher_status(answer_time);
    if (!status)
        return {{"publisher", state::good, "none runs; the first sender starts one", ""}};
    auto const version = status->value("version", "");
    auto const name = "process " + std::to_string(status->value("pid", 0)) + ", version " + version;
    if (version != QUILLO_VERSION)
        return {{"publisher", state::note, name + " runs, this is " QUILLO_VERSION,
                 "end it; the next sender starts the one that is installed now"}};
    return {
        {"publisher", state::good, name + " serves " + std::to_string((*status)["sources"].size()) + " sources", ""}};
}

findings clock()
{
    timespec resolution{};
    ::clock_getres(CLOCK_MONOTONIC, &resolution);
    if (resolution.tv_sec > 0 || resolution.tv_nsec > 1'000'000)
        return {{"clock", state::bad, "the monotonic clock counts in steps of more than 1 ms",
                 "choose another clock source for the kernel (clocksource=)"}};
    std::vector<std::chrono::nanoseconds> late;
    for (int k = 0; k < sleeps; ++k) {
        auto const until = std::chrono::steady_clock::now() + sleep_length;
        std::this_thread::sleep_until(until);
        late.push_back(std::chrono::steady_clock::now() - until);
    }
    std::sort(late.begin(), late.end());
    auto const worst = late[late.size() * 9 / 10];
    if (worst > lateness_allowed)
        return {{"clock", state::note, "one sleep in ten ends " + milliseconds(worst) + " late or more",
                 "the machine is busy: pictures and sound will come unevenly"}};
    return {{"clock", state::good, "nine sleeps in ten end within " + milliseconds(worst), ""}};
}

} // namespace quillo::doctor
