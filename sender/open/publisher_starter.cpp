#include "sender/open/publisher_starter.h"

#include "sender/open/system_call.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <csignal>
#include <cstdlib>

extern char** environ;

namespace quillo::open {

using namespace std::chrono_literals;

void start_limit::started(steady::time_point now)
{
    last_start = now;
    allowed = now + patience;
    patience = std::min<steady::duration>(2 * patience, longest);
}

void start_limit::answered(steady::time_point now) { last_answer = now; }

void start_limit::lost(steady::time_point now)
{
    if (now - last_answer >= 5s) {
        patience = shortest;
        allowed = now;
    } else {
        // 1 s after the first start, then 2 s, 4 s, ...
        allowed = std::min(allowed, last_start + patience / 6);
    }
}

start_environment start_environment::of_this_process()
{
    start_environment result;
    for (char** variable = environ; variable && *variable; ++variable)
        result.variables.emplace_back(*variable);
    return result;
}

char const* start_environment::get(std::string_view name) const
{
    for (auto const& variable : variables)
        if (variable.size() > name.size() && variable.starts_with(name) && variable[name.size()] == '=')
            return variable.c_str() + name.size() + 1;
    return nullptr;
}

namespace {

bool is_program(std::string const& path)
{
    struct stat found;
    return ::stat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

// Without links and dots; empty when there is no such file.
std::string plain_path(std::string const& path)
{
    std::array<char, PATH_MAX> resolved;
    return ::realpath(path.c_str(), resolved.data()) ? std::string{resolved.data()} : std::string{};
}

std::string folder_of_this_library()
{
    Dl_info info{};
    if (!::dladdr(reinterpret_cast<void const*>(&folder_of_this_library), &info) || !info.dli_fname)
        return {};
    auto const path = plain_path(info.dli_fname);
    return path.substr(0, path.rfind('/'));
}

// What posix_spawn is told, released on every way out.
struct spawn_settings
{
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    int error = 0; // the first

    explicit spawn_settings(std::string const& log_file)
    {
        note(::posix_spawn_file_actions_init(&files));
        note(::posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
        note(::posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, log_file.c_str(),
                                                O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600));
        note(::posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO));

        note(::posix_spawnattr_init(&attributes));
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        note(::posix_spawnattr_setsigmask(&attributes, &none));
        note(::posix_spawnattr_setsigdefault(&attributes, &all));
        int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID;
#ifdef __APPLE__
        flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
#else
        note(::posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1));
#endif
        note(::posix_spawnattr_setflags(&attributes, static_cast<short>(flags)));
    }
    spawn_settings(spawn_settings const&) = delete;
    spawn_settings& operator=(spawn_settings const&) = delete;
    ~spawn_settings()
    {
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&files);
    }

  private:
    void note(int result)
    {
        if (!error)
            error = result;
    }
};

} // namespace

std::optional<std::string> find_publisher(start_environment const& environment)
{
    if (char const* const chosen = environment.get("QUILLO_PUBLISHER"))
        return *chosen ? std::optional<std::string>{chosen} : std::nullopt;

    if (auto const here = folder_of_this_library(); !here.empty())
        for (char const* const place : {"/quillo", "/../bin/quillo", "/../../bin/quillo", "/../../tools/quillo/quillo"})
            if (is_program(here + place))
                return plain_path(here + place);

    std::string_view folders{environment.get("PATH") ? environment.get("PATH") : ""};
    while (!folders.empty()) {
        auto const end = std::min(folders.find(':'), folders.size());
        if (auto const program = std::string{folders.substr(0, end)} + "/quillo"; end && is_program(program))
            return program;
        folders.remove_prefix(std::min(end + 1, folders.size()));
    }
    return {};
}

void start_publisher(std::string const& program, std::string const& folder, start_environment const& environment)
{
    if (!is_program(program))
        throw std::system_error{ENOENT, std::generic_category(), program};

    // The shell ends at once and is waited for; the publisher in its background becomes a child of the system's first
    // process, so that this process never has to collect it.
    std::array<std::string, 6> words{"sh", "-c", R"("$0" "$@" &)", program, "serve", "--on-demand"};
    std::array<char*, words.size() + 1> arguments{};
    std::transform(words.begin(), words.end(), arguments.begin(), [](std::string& word) { return word.data(); });

    std::vector<char*> variables;
    for (auto const& variable : environment.variables)
        variables.push_back(const_cast<char*>(variable.c_str()));
    variables.push_back(nullptr);

    spawn_settings const settings{folder + "/publisher.log"};
    pid_t shell = 0;
    int error = settings.error;
    if (!error)
        error =
            ::posix_spawn(&shell, "/bin/sh", &settings.files, &settings.attributes, arguments.data(), variables.data());
    if (error)
        throw std::system_error{error, std::generic_category(), "posix_spawn"};
    while (::waitpid(shell, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace quillo::open
