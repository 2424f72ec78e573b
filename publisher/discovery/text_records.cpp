#include "publisher/discovery/text_records.h"

#include "lib/text/utf8.h"

#include <string_view>

namespace quillo::discovery {

namespace {

constexpr std::size_t longest_record = 255; // bytes: key, equals sign and value

} // namespace

text_list_ptr to_list(std::map<std::string, std::string> const& txt)
{
    text_list_ptr list;
    for (auto const& [key, value] : txt) {
        if (key.empty() || key.size() + 1 > longest_record)
            continue;
        auto const record = key + "=" + std::string{text::cut(value, longest_record - key.size() - 1)};
        list.reset(avahi_string_list_add_arbitrary(list.release(), reinterpret_cast<uint8_t const*>(record.data()),
                                                   record.size()));
    }
    return list;
}

std::map<std::string, std::string> from_list(AvahiStringList* list)
{
    std::map<std::string, std::string> txt;
    for (; list; list = avahi_string_list_get_next(list)) {
        std::string_view const record{reinterpret_cast<char const*>(avahi_string_list_get_text(list)),
                                      avahi_string_list_get_size(list)};
        auto const end = record.find('=');
        auto const key = record.substr(0, end);
        if (!key.empty())
            txt.emplace(key, end == std::string_view::npos ? std::string_view{} : record.substr(end + 1));
    }
    return txt;
}

} // namespace quillo::discovery
