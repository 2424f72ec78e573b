// Back end: the built module, loaded as the host loads it.
#include <dlfcn.h>

#include <stdexcept>

#include "tests/support/module_under_test.h"
#include "tests/support/shell_commands.h"

namespace quillo::test {

namespace {

class loaded_module final : public module_under_test
{
  public:
    loaded_module() : handle(dlopen(QUILLO_MODULE, RTLD_NOW | RTLD_LOCAL))
    {
        if (!handle)
            throw std::runtime_error(dlerror());
    }
    ~loaded_module() override { dlclose(handle); }
    loaded_module(loaded_module const&) = delete;
    loaded_module& operator=(loaded_module const&) = delete;

    tmEntryFunc entry() const override { return reinterpret_cast<tmEntryFunc>(exported("xTransmitEntry")); }
    void* exported(std::string const& name) const override { return dlsym(handle, name.c_str()); }
    std::vector<std::string> take_commands() override { return commands.take(); }
    bool exceptions_cross() const override { return true; }

  private:
    void* handle;
    shell_commands commands;
};

} // namespace

std::unique_ptr<module_under_test> load_module_under_test() { return std::make_unique<loaded_module>(); }

} // namespace quillo::test
