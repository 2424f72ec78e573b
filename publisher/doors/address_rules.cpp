#include "publisher/doors/address_rules.h"

#include <algorithm>
#include <array>

namespace quillo::publisher {

namespace {

struct word_of_ranges
{
    std::string_view word;
    std::string_view range;
};

// Not 100.64.0.0/10: behind it are a provider's other customers.
constexpr std::array<word_of_ranges, 10> words{{{"loopback", "127.0.0.0/8"},
                                                {"loopback", "::1"},
                                                {"private", "10.0.0.0/8"},
                                                {"private", "172.16.0.0/12"},
                                                {"private", "192.168.0.0/16"},
                                                {"private", "fc00::/7"},
                                                {"link-local", "169.254.0.0/16"},
                                                {"link-local", "fe80::/10"},
                                                {"any", "0.0.0.0/0"},
                                                {"any", "::/0"}}};

object_ptr<GInetAddress> without_clothes(GInetAddress* address)
{
    static constexpr guint8 mapped[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    guint8 const* const bytes = g_inet_address_to_bytes(address);
    if (g_inet_address_get_family(address) == G_SOCKET_FAMILY_IPV6 &&
        std::equal(std::begin(mapped), std::end(mapped), bytes))
        return object_ptr<GInetAddress>{g_inet_address_new_from_bytes(bytes + 12, G_SOCKET_FAMILY_IPV4)};
    return retain_object(address);
}

} // namespace

address_rules::address_rules() : text_("near") { add("near"); }

bool address_rules::add(std::string_view word)
{
    if (word == "near")
        return add("loopback") && add("private") && add("link-local");
    bool known = false;
    for (auto const& one : words)
        if (!word.empty() && one.word == word)
            known = add(one.range);
    if (known)
        return true;
    // The parser itself takes an empty text for everything.
    if (word.empty())
        return false;
    GInetAddressMask* const range = g_inet_address_mask_new_from_string(std::string{word}.c_str(), nullptr);
    if (range)
        ranges_.emplace_back(range, g_object_unref);
    return range != nullptr;
}

std::optional<address_rules> address_rules::parse(std::string_view list)
{
    address_rules made;
    made.text_ = list;
    made.ranges_.clear();
    for (bool more = true; more;) {
        auto const end = list.find(',');
        more = end != std::string_view::npos;
        auto word = list.substr(0, end);
        while (word.starts_with(' '))
            word.remove_prefix(1);
        while (word.ends_with(' '))
            word.remove_suffix(1);
        if (!made.add(word))
            return std::nullopt;
        if (more)
            list.remove_prefix(end + 1);
    }
    return made;
}

bool address_rules::allow(GInetAddress* address) const
{
    auto const plain = without_clothes(address);
    return std::any_of(ranges_.begin(), ranges_.end(),
                       [&](auto const& range) { return g_inet_address_mask_matches(range.get(), plain.get()); });
}

bool address_rules::allow(std::string const& address) const
{
    object_ptr<GInetAddress> const parsed{g_inet_address_new_from_string(address.c_str())};
    return parsed && allow(parsed.get());
}

} // namespace quillo::publisher
