#include "publisher/page/assets.h"

#include <array>
#include <map>
#include <utility>

namespace quillo::publisher {

namespace {

char const* type_of(std::string_view name)
{
    static constexpr std::array<std::pair<std::string_view, char const*>, 4> types{{
        {".html", "text/html; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".svg", "image/svg+xml"},
    }};
    for (auto const& [ending, type] : types)
        if (name.ends_with(ending))
            return type;
    return "application/octet-stream";
}

std::map<std::string, asset, std::less<>> by_path()
{
    std::map<std::string, asset, std::less<>> all;
    for (auto const& file : embedded_files())
        all[file.name == "index.html" ? "/" : "/" + std::string{file.name}] = {type_of(file.name), file.content};
    return all;
}

} // namespace

asset const* find_asset(std::string_view path)
{
    static auto const all = by_path();
    auto const found = all.find(path);
    return found == all.end() ? nullptr : &found->second;
}

} // namespace quillo::publisher
