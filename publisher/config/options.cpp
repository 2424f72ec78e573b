#include "publisher/config/options.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <utility>

namespace quillo::publisher {

namespace {

constexpr char const* true_or_false = "true or false";

std::string range(int least, int most) { return std::to_string(least) + " to " + std::to_string(most); }

bool take_number(std::string const& value, int least, int most, int& into)
{
    int number = 0;
    auto const [end, failed] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (failed != std::errc{} || end != value.data() + value.size() || number < least || number > most)
        return false;
    into = number;
    return true;
}

bool take_flag(std::string const& value, bool& into)
{
    if (value != "true" && value != "false")
        return false;
    into = value == "true";
    return true;
}

bool take_address(std::string const& value, std::string& into)
{
    object_ptr<GInetAddress> const parsed{g_inet_address_new_from_string(value.c_str())};
    if (parsed)
        into = value;
    return parsed != nullptr;
}

bool take_name(std::string const& value, std::string& into)
{
    if (value.empty())
        return false;
    into = value;
    return true;
}

template <auto Member, int least, int most>
option number(char const* group, char const* key)
{
    return {group, key, range(least, most), false,
            [](configuration& to, std::string const& value) { return take_number(value, least, most, to.*Member); }};
}

template <auto Member, int least, int most>
option seconds(char const* group, char const* key)
{
    return {group, key, range(least, most) + " (seconds)", false, [](configuration& to, std::string const& value) {
                int count = 0;
                bool const fine = take_number(value, least, most, count);
                if (fine)
                    to.*Member = std::chrono::seconds{count};
                return fine;
            }};
}

template <auto Member>
option flag(char const* group, char const* key)
{
    return {group, key, true_or_false, false,
            [](configuration& to, std::string const& value) { return take_flag(value, to.*Member); }};
}

template <auto Member>
option address(char const* group, char const* key)
{
    return {group, key, "an IPv4 or IPv6 address; :: is every address", false,
            [](configuration& to, std::string const& value) { return take_address(value, to.*Member); }};
}

template <auto Member>
option name(char const* group, char const* key, char const* allowed, bool secret = false)
{
    return {group, key, allowed, secret,
            [](configuration& to, std::string const& value) { return take_name(value, to.*Member); }};
}

using c = configuration;

std::vector<option> const& table()
{
    static std::vector<option> const rows{
        address<&c::address>("network", "address"),
        number<&c::port, 0, 65535>("network", "port"),
        {"network", "allow", address_rules::allowed_words, false,
         [](configuration& to, std::string const& value) {
             auto rules = address_rules::parse(value);
             if (rules)
                 to.allow = std::move(*rules);
             return rules.has_value();
         }},
        flag<&c::announce>("network", "announce"),

        {"access", "user", "a name without a colon or control characters", false,
         [](configuration& to, std::string const& value) {
             bool const fine = std::none_of(value.begin(), value.end(), [](unsigned char one) {
                 return one == ':' || one == '"' || one == '\\' || one < ' ' || one == 0x7F;
             });
             return fine && take_name(value, to.user);
         }},
        name<&c::password>("access", "password", "anything but nothing", true),

        flag<&c::tls>("tls", "enabled"),
        number<&c::tls_port, 0, 65535>("tls", "port"),
        name<&c::certificate>("tls", "certificate", "a PEM file"),
        name<&c::key>("tls", "key", "a PEM file"),

        number<&c::raw_viewers, 0, 1000>("limits", "raw-viewers"),
        number<&c::encoded_viewers, 0, 1000>("limits", "encoded-viewers"),
        number<&c::connections, 1, 10000>("limits", "connections"),
        number<&c::connections_per_address, 1, 10000>("limits", "connections-per-address"),
        number<&c::request_size, 1024, 1048576>("limits", "request-size"),
        seconds<&c::request_time, 1, 3600>("limits", "request-time"),

        seconds<&c::slate, 0, 86400>("sources", "slate"),

        flag<&c::page>("page", "enabled"),
        address<&c::page_address>("page", "address"),
        number<&c::page_port, 0, 65535>("page", "port"),

        name<&c::encoder>("video", "encoder", "the name of an H.264 encoder element"),

        number<&c::nice, 0, 19>("process", "nice"),

        {"log", "level", log::allowed_levels, false,
         [](configuration& to, std::string const& value) {
             auto const level = log::parse_level(value);
             if (level)
                 to.log_level = *level;
             return level.has_value();
         }},
        flag<&c::log_json>("log", "json"),
    };
    return rows;
}

// Letters to be changed, put in or taken out.
std::size_t distance(std::string const& a, std::string const& b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t k = 0; k < b.size(); ++k) {
            std::size_t const changed = diagonal + (a[i] == b[k] ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({changed, row[k] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::span<option const> options() { return table(); }

std::string nearest(std::string const& word, std::vector<std::string> const& known)
{
    std::string best;
    constexpr std::size_t longest = 40;
    std::size_t least = 3;
    if (word.size() <= longest)
        for (auto const& one : known)
            if (auto const far = distance(word, one); far < std::min(least, one.size())) {
                least = far;
                best = one;
            }
    return best;
}

} // namespace quillo::publisher
