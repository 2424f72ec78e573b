// Where the plug-in module is.
#pragma once

#include <filesystem>

namespace quillo {

// Beside this program, in its build tree, or installed with it; the first place looked at where it is in none.
std::filesystem::path default_module();

} // namespace quillo
