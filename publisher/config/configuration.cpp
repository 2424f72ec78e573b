#include "publisher/config/configuration.h"

#include "publisher/config/options.h"

#include "sender/open/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <utility>

namespace quillo::publisher {

namespace {

constexpr std::size_t max_file = 1 << 16;
constexpr std::size_t max_repeated = 60; // of what the file says, in a message

std::string quoted(std::string const& text)
{
    return "\"" + (text.size() > max_repeated ? text.substr(0, max_repeated) + "..." : text) + "\"";
}

std::string without_spaces(std::string const& text)
{
    auto const first = text.find_first_not_of(" \t");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string advice(std::string const& word, std::vector<std::string> known)
{
    std::sort(known.begin(), known.end());
    known.erase(std::unique(known.begin(), known.end()), known.end());
    if (auto const meant = nearest(word, known); !meant.empty())
        return "did you mean " + meant + "?";
    std::string all;
    for (auto const& one : known)
        all += (all.empty() ? "" : ", ") + one;
    return "there are " + all;
}

std::vector<std::string> known_groups()
{
    std::vector<std::string> names;
    for (auto const& one : options())
        names.emplace_back(one.group);
    return names;
}

std::vector<std::string> known_keys(std::string const& group)
{
    std::vector<std::string> names;
    for (auto const& one : options())
        if (one.group == group)
            names.emplace_back(one.key);
    return names;
}

// What belongs together: one without the other is a mistake that would leave a door open.
void check_pairs(std::map<std::pair<std::string, std::string>, int> const& lines, std::vector<file_problem>& problems)
{
    for (auto const& [group, one, other] : {std::tuple{"access", "user", "password"},
                                            {"access", "password", "user"},
                                            {"tls", "certificate", "key"},
                                            {"tls", "key", "certificate"}})
        if (auto const given = lines.find({group, one}); given != lines.end() && !lines.contains({group, other}))
            problems.push_back({given->second, std::string{one} + " also needs " + other + " in [" + group + "]"});
}

std::string whole_name(std::string const& name, std::string const& folder)
{
    return name.empty() ? name : (std::filesystem::path{folder} / name).lexically_normal().string();
}

[[noreturn]] void refuse(std::string const& file, std::string const& why)
{
    throw bad_configuration{file + ": " + why};
}

std::string text_of(std::string const& file, int fd)
{
    std::string text(max_file + 1, '\0');
    std::size_t size = 0;
    while (size < text.size()) {
        ssize_t const count = ::read(fd, text.data() + size, text.size() - size);
        if (count < 0)
            refuse(file, std::strerror(errno));
        if (count == 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    if (size > max_file)
        refuse(file, "longer than " + std::to_string(max_file) + " bytes");
    text.resize(size);
    return text;
}

} // namespace

std::string default_configuration_file()
{
    return (std::filesystem::path{g_get_user_config_dir()} / "quillo" / "quillo.conf").string();
}

configuration configuration_from(std::string const& text, std::string const& folder,
                                 std::vector<file_problem>& problems)
{
    configuration result;
    auto const file = parse_key_file(text);
    problems = file.problems;
    auto const groups = known_groups();
    for (auto const& one : file.groups)
        if (std::find(groups.begin(), groups.end(), one.name) == groups.end())
            problems.push_back({one.line, "there is no group [" + one.name + "]: " + advice(one.name, groups)});

    std::map<std::pair<std::string, std::string>, int> lines;
    for (auto const& one : file.entries) {
        if (std::find(groups.begin(), groups.end(), one.group) == groups.end())
            continue;
        auto const row = std::find_if(options().begin(), options().end(),
                                      [&](option const& o) { return o.group == one.group && o.key == one.key; });
        if (row == options().end()) {
            problems.push_back({one.line, "there is no key " + quoted(one.key) + " in [" + one.group +
                                              "]: " + advice(one.key, known_keys(one.group))});
            continue;
        }
        if (auto const [first, fresh] = lines.emplace(std::pair{one.group, one.key}, one.line); !fresh) {
            problems.push_back({one.line, one.key + " is given twice, first in line " + std::to_string(first->second)});
            continue;
        }
        if (!one.value)
            continue;
        auto const value = row->secret ? *one.value : without_spaces(*one.value);
        if (!row->take(result, value))
            problems.push_back(
                {one.line, one.key + (row->secret ? "" : " = " + quoted(value)) + " is not allowed: " + row->allowed});
    }
    check_pairs(lines, problems);
    result.certificate = whole_name(result.certificate, folder);
    result.key = whole_name(result.key, folder);
    std::stable_sort(problems.begin(), problems.end(), [](auto const& a, auto const& b) { return a.line < b.line; });
    return result;
}

configuration read_configuration(std::string const& file)
{
    // Not to wait for the other end of a pipe.
    open::descriptor const opened{::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)};
    struct stat found
    {
    };
    if (!opened || ::fstat(opened.get(), &found) != 0)
        refuse(file, std::strerror(errno));
    if (!S_ISREG(found.st_mode))
        refuse(file, "not a file");
    if (found.st_uid != ::getuid())
        refuse(file,
               "belongs to another user (mend it with: sudo chown " + std::to_string(::getuid()) + " '" + file + "')");
    if (found.st_mode & (S_IWGRP | S_IWOTH))
        refuse(file, "others may write to it (mend it with: chmod go-w '" + file + "')");

    std::vector<file_problem> problems;
    auto result =
        configuration_from(text_of(file, opened.get()), std::filesystem::path{file}.parent_path().string(), problems);
    if (!result.password.empty() && (found.st_mode & (S_IRWXG | S_IRWXO)))
        problems.push_back({0, "holds a password and others may read it (mend it with: chmod 600 '" + file + "')"});
    std::string all;
    for (auto const& one : problems)
        all += (all.empty() ? "" : "\n") + file + (one.line ? ":" + std::to_string(one.line) : "") + ": " + one.text;
    if (!all.empty())
        throw bad_configuration{all};
    return result;
}

} // namespace quillo::publisher
