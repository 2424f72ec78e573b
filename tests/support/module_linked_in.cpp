// Back end: the plug-in's code in the test program itself, so that sanitizers and a fake steady clock reach it.
#include <map>

#include "Plugins/Plugins.AdobeCC.Transmit/Plugins.AdobeCC.Transmit.h"
#include "Plugins/Plugins.AdobeCC.Transmit/Quillo_Transmit_AdobeCC.h"
#include "tests/support/module_under_test.h"
#include "tests/support/shell_commands.h"

namespace quillo::test {

namespace {

class linked_module final : public module_under_test
{
  public:
    tmEntryFunc entry() const override { return &xTransmitEntry; }
    void* exported(std::string const& name) const override
    {
        static std::map<std::string, void*> const functions = {
            {"xTransmitEntry", reinterpret_cast<void*>(&xTransmitEntry)},
            {"_Z3gcdxx", reinterpret_cast<void*>(&gcd)},
            {"_ZN23Quillo_Transmit_AdobeCC10HelloWorldEPKc",
             reinterpret_cast<void*>(&Quillo_Transmit_AdobeCC::HelloWorld)}};
        auto const found = functions.find(name);
        return found == functions.end() ? nullptr : found->second;
    }
    std::vector<std::string> take_commands() override { return commands.take(); }
    bool exceptions_cross() const override { return true; }

  private:
    shell_commands commands;
};

} // namespace

std::unique_ptr<module_under_test> load_module_under_test() { return std::make_unique<linked_module>(); }

} // namespace quillo::test
