// Text in UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace quillo::text {

// At most so many bytes of it, never half a character.
constexpr std::string_view cut(std::string_view text, std::size_t most)
{
    if (text.size() <= most)
        return text;
    auto const continues = [&](std::size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80; };
    while (most > 0 && continues(most))
        --most;
    return text.substr(0, most);
}

} // namespace quillo::text
