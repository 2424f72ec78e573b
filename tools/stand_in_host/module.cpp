#include "tools/stand_in_host/module.h"
#include "tools/stand_in_host/suites/suites.h"

#include <dlfcn.h>

namespace quillo::stand_in {

namespace {

constexpr csSDK_int32 interface_version = 1;

}

void module::close_library::operator()(void* handle) const { dlclose(handle); }

module::module(std::filesystem::path const& file)
{
    if (!std::filesystem::exists(file))
        throw module_error("no module at " + file.string());
    library.reset(dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library)
        throw module_error(std::string("cannot load the module: ") + dlerror());
    entry = reinterpret_cast<tmEntryFunc>(dlsym(library.get(), "xTransmitEntry"));
    if (entry == nullptr)
        throw module_error(file.string() + " has no xTransmitEntry");
    tmResult const result =
        call_module("xTransmitEntry", entry, interface_version, prBool{kPrTrue}, legacy_suites(), &table.functions);
    if (result != host::success)
        throw module_error(file.string() + ": xTransmitEntry answered " + std::to_string(result));
}

module::~module()
{
    try {
        call_module("xTransmitEntry", entry, interface_version, prBool{kPrFalse}, legacy_suites(), &table.functions);
    } catch (module_failure const&) {
        // Nobody is left to be told.
    }
}

} // namespace quillo::stand_in
