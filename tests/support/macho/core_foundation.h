// The Core Foundation and Core Services calls that the module imports. Strings are kept as UTF-16, which is what ranges
// and lengths count in; the fork calls are the plug-in's own for ordinary files.
#pragma once

#include "tests/support/macho/darwin.h"

namespace quillo::macho {

std::span<adapter const> core_foundation_adapters();
std::span<adapter const> core_services_adapters();

// Strings created and not released.
int living_strings();

} // namespace quillo::macho
