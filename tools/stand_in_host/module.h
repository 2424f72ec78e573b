// A transmit module: loaded from its file, reached through its one entry.
#pragma once

#include "host/adapter.h"

#include <filesystem>
#include <memory>
#include <stdexcept>

namespace quillo::stand_in {

// The module, or its entry, cannot be loaded; what() is one line.
class module_error : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// The module threw where nothing may be thrown, or failed a call that must not fail.
class module_failure : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// A host_state lives as long as this. One thread calls at a time.
class module
{
  public:
    explicit module(std::filesystem::path const& file);
    module(module const&) = delete;
    module& operator=(module const&) = delete;
    ~module(); // the entry's unload call, then the library is closed

    tmModule const& functions() const { return table.functions; }

  private:
    struct close_library
    {
        void operator()(void* library) const;
    };

    // Hosts of later releases know seven functions more.
    struct function_table
    {
        tmModule functions{};
        void* later[20]{};
    };

    std::unique_ptr<void, close_library> library;
    tmEntryFunc entry = nullptr;
    function_table table;
};

// Calls a function of the module. What it throws becomes a module_failure that names the call.
template <typename Function, typename... Arguments>
tmResult call_module(char const* name, Function function, Arguments... arguments)
{
    if (function == nullptr)
        return host::success;
    try {
        return function(arguments...);
    } catch (std::exception const& error) {
        throw module_failure(std::string("the module's ") + name + " threw: " + error.what());
    } catch (...) {
        throw module_failure(std::string("the module's ") + name + " threw");
    }
}

} // namespace quillo::stand_in
