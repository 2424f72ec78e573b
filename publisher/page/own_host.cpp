#include "publisher/page/own_host.h"

#include "publisher/machine.h"

#include <algorithm>
#include <array>

namespace quillo::publisher {

namespace {

constexpr std::size_t longest_name = 253;

bool is_port(std::string_view text)
{
    return !text.empty() && text.size() <= 5 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string lower(std::string_view text)
{
    std::string result{text};
    for (char& c : result)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return result;
}

} // namespace

std::string host_of(std::string_view authority)
{
    bool const bracketed = authority.starts_with('[');
    std::size_t const end = bracketed ? authority.find(']') : authority.find(':');
    if (bracketed && end == std::string_view::npos)
        return {};
    std::string_view const host = bracketed ? authority.substr(1, end - 1) : authority.substr(0, end);
    std::string_view const rest = end == std::string_view::npos ? "" : authority.substr(end + (bracketed ? 1 : 0));
    if (!rest.empty() && !(rest.front() == ':' && is_port(rest.substr(1))))
        return {};
    if (host.empty() || host.size() > longest_name)
        return {};
    return lower(host);
}

std::vector<std::string> own_names()
{
    std::vector<std::string> names{"localhost", "127.0.0.1", "::1"};
    std::string const name = lower(machine_name());
    if (!name.empty()) {
        names.push_back(name);
        names.push_back(name + ".local");
    }
    return names;
}

bool is_own_host(std::string_view header, std::vector<std::string> const& names, std::string_view local_address)
{
    std::string const host = host_of(header);
    return !host.empty() && (host == local_address || std::find(names.begin(), names.end(), host) != names.end());
}

bool is_own_origin(std::string_view origin, std::string_view host)
{
    for (std::string_view const scheme : std::array<std::string_view, 2>{"http://", "https://"})
        if (origin.starts_with(scheme))
            return lower(origin.substr(scheme.size())) == lower(host);
    return false;
}

} // namespace quillo::publisher
