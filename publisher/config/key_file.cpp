#include "publisher/config/key_file.h"

#include "publisher/gst_ptr.h"

#include <string_view>

namespace quillo::publisher {

namespace {

using key_file_ptr = std::unique_ptr<GKeyFile, releases<g_key_file_unref>>;

std::vector<std::string_view> lines_of(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        auto const end = std::min(text.find('\n'), text.size());
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::string_view trimmed(std::string_view text)
{
    auto const first = text.find_first_not_of(" \t\r\f\v");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r\f\v") - first + 1);
}

// What GLib makes of the first size bytes: null, and why, when it cannot read them.
key_file_ptr loaded(std::string const& text, std::size_t size, error_ptr& why)
{
    key_file_ptr file{g_key_file_new()};
    GError* error = nullptr;
    bool const fine = g_key_file_load_from_data(file.get(), text.data(), size, G_KEY_FILE_NONE, &error);
    why.reset(error);
    // An empty file is no error here.
    if (!fine && !(error && error->code == G_KEY_FILE_ERROR_NOT_FOUND))
        return nullptr;
    return file;
}

// The parser goes line by line and stops at the first it cannot read: the shortest beginning that fails ends there.
int first_unreadable_line(std::string const& text, std::vector<std::string_view> const& lines)
{
    std::size_t good = 0, bad = lines.size();
    while (bad - good > 1) {
        auto const middle = good + (bad - good) / 2;
        auto const& last = lines[middle - 1];
        error_ptr why;
        auto const size = static_cast<std::size_t>(last.data() + last.size() - text.data());
        (loaded(text, size, why) ? good : bad) = middle;
    }
    return static_cast<int>(bad);
}

} // namespace

key_file parse_key_file(std::string const& text)
{
    key_file result;
    auto const lines = lines_of(text);
    for (std::size_t k = 0; k < lines.size(); ++k)
        if (lines[k].find('\0') != std::string_view::npos ||
            !g_utf8_validate(lines[k].data(), static_cast<gssize>(lines[k].size()), nullptr))
            result.problems.push_back({static_cast<int>(k + 1), "this is no text in UTF-8"});
    if (!result.problems.empty())
        return result;

    error_ptr why;
    auto const file = loaded(text, text.size(), why);
    if (!file) {
        int const line = first_unreadable_line(text, lines);
        // Without the line itself: a password may be in it.
        result.problems.push_back({line, "neither [group], nor key = value within a group, nor # comment"});
        return result;
    }

    for (std::size_t k = 0; k < lines.size(); ++k) {
        int const number = static_cast<int>(k + 1);
        auto const line = trimmed(lines[k]);
        if (line.empty() || line.front() == '#')
            continue;
        if (line.front() == '[') {
            result.groups.push_back({std::string{line.substr(1, line.find(']') - 1)}, number});
            continue;
        }
        if (result.groups.empty())
            continue;
        key_file::entry one{
            result.groups.back().name, std::string{trimmed(line.substr(0, line.find('=')))}, {}, number};
        GError* error = nullptr;
        string_ptr const value{g_key_file_get_string(file.get(), one.group.c_str(), one.key.c_str(), &error)};
        error_ptr const owned{error};
        if (value && !owned)
            one.value = value.get();
        else
            result.problems.push_back(
                {number, one.key + ": a backslash stands before s, n, t, r or another backslash"});
        result.entries.push_back(std::move(one));
    }
    return result;
}

} // namespace quillo::publisher
