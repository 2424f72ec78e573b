// Back end: the macOS module, run by the loader. Its sender is the recording one.
#include "tests/support/macho/core_foundation.h"
#include "tests/support/macho/image.h"
#include "tests/support/macho/system.h"
#include "tests/support/module_under_test.h"

#include "sender/Quillolib_send.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace quillo::test {

namespace {

void* import(std::string_view library, std::string_view symbol)
{
    using namespace quillo::macho;
    static std::array const sender = {adapt("_Quillolib_send_create", Quillolib_send_create),
                                      adapt("_Quillolib_send_destroy", Quillolib_send_destroy),
                                      adapt("_Quillolib_send_send_audio", Quillolib_send_send_audio),
                                      adapt("_Quillolib_send_send_video", Quillolib_send_send_video),
                                      adapt("_Quillolib_send_send_video_async", Quillolib_send_send_video_async)};
    struct provider
    {
        std::string_view library;
        std::span<adapter const> table;
    };
    std::array const providers = {
        provider{"@rpath/libquillo.4.dylib", sender},
        provider{"/System/Library/Frameworks/CoreFoundation.framework/Versions/A/CoreFoundation",
                 core_foundation_adapters()},
        provider{"/System/Library/Frameworks/CoreServices.framework/Versions/A/CoreServices",
                 core_services_adapters()}};
    for (auto const& each : providers)
        if (each.library == library) {
            auto const found = std::ranges::find_if(each.table, [&](auto const& one) { return one.symbol == symbol; });
            return found == each.table.end() ? nullptr : found->target;
        }
    return system_symbol(library, symbol);
}

// At the end of the program no string of Core Foundation may be left over.
class no_string_left final : public testing::Environment
{
    void TearDown() override { EXPECT_EQ(quillo::macho::living_strings(), 0); }
};
testing::Environment* const at_the_end = testing::AddGlobalTestEnvironment(new no_string_left);

class macos_module final : public module_under_test
{
  public:
    tmEntryFunc entry() const override { return reinterpret_cast<tmEntryFunc>(exported("xTransmitEntry")); }
    void* exported(std::string const& name) const override { return image.exported("_" + name); }
    std::vector<std::string> take_commands() override { return quillo::macho::take_system_commands(); }
    bool exceptions_cross() const override { return true; }

  private:
    quillo::macho::image image{QUILLO_MACOS_MODULE, import};
};

} // namespace

std::unique_ptr<module_under_test> load_module_under_test() { return std::make_unique<macos_module>(); }

} // namespace quillo::test
