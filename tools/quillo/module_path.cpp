#include "tools/quillo/module_path.h"

namespace quillo {

std::filesystem::path default_module()
{
    namespace fs = std::filesystem;
    static constexpr char const* file = "Plugins.AdobeCC.Transmit.so";
    std::error_code error;
    fs::path const folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    fs::path const places[] = {
        folder / file,
        folder / "../../Plugins/Plugins.AdobeCC.Transmit" / file,
        folder / ".." / QUILLO_LIBRARY_FOLDER / "quillo" / file,
    };
    for (fs::path const& place : places)
        if (fs::exists(place, error))
            return place.lexically_normal();
    return places[0];
}

} // namespace quillo
