// The platform's text conversion: Core Foundation where there is one.
#pragma once

#include <cstddef>

#include "host/adapter.h"

namespace quillo {

// Converts length UTF-32 characters to UTF-16 without a byte-order mark and writes the first limit units of the result,
// or all of it if it is shorter. The cut may fall inside a pair of surrogates.
void utf16_from_wide(wchar_t const* text, std::size_t length, prUTF16Char* units, std::size_t limit);

} // namespace quillo
