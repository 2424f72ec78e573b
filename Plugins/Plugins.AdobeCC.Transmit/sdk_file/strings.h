// Strings of the host's interface.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/exported.h"
#include "host/adapter.h"

// Writes the text as UTF-16 and a terminating zero. As many units are written as the text has characters, so a text
// with characters that take two units loses its end. out holds that many units and one more.
QUILLO_EXPORTED void copyConvertStringLiteralIntoUTF16(wchar_t const* in, prUTF16Char* out);
