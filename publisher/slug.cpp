#include "publisher/slug.h"

#include "publisher/gst_ptr.h"

#include <cctype>

namespace quillo::publisher {

namespace {

constexpr std::size_t max_slug = 60;

// Letters without their accents where that is possible: "Übung" becomes "Ubung".
std::string to_ascii(std::string_view name)
{
    string_ptr const valid{g_utf8_make_valid(name.data(), static_cast<gssize>(name.size()))};
    string_ptr const ascii{g_str_to_ascii(valid.get(), "C")};
    return ascii.get();
}

} // namespace

std::string slug(std::string_view name)
{
    std::string result;
    for (char const c : to_ascii(name)) {
        if (result.size() == max_slug)
            break;
        if (std::isalnum(static_cast<unsigned char>(c)))
            result += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        else if (!result.empty() && result.back() != '-')
            result += '-';
    }
    while (!result.empty() && result.back() == '-')
        result.pop_back();
    return result.empty() ? "source" : result;
}

std::string clean_name(std::string_view name, std::size_t max_bytes)
{
    string_ptr const valid{g_utf8_make_valid(name.data(), static_cast<gssize>(name.size()))};
    std::string result;
    for (char const* p = valid.get(); *p; p = g_utf8_next_char(p)) {
        std::string_view const character{p, static_cast<std::size_t>(g_utf8_next_char(p) - p)};
        if (result.size() + character.size() > max_bytes)
            break;
        if (!g_unichar_iscntrl(g_utf8_get_char(p)))
            result += character;
    }
    return result;
}

} // namespace quillo::publisher
