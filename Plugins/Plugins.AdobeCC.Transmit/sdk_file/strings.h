// Strings of the host's interface.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/exported.h"
#include "host/adapter.h"

// Writes the text as UTF-16 and a terminating zero. As many units are written as the text has characters, so a text
// with characters that take two units loses its end. out holds that many units and one more.
QUILLO_EXPORTED void copyConvertStringLiteralIntoUTF16(wchar_t const* in, prUTF16Char* out);

// Copies the text with its zero, and appends the text with its zero. size is what the caller takes dst for; it is not
// looked at, so dst must hold the result.
QUILLO_EXPORTED void safeStrCpy(char* dst, int size, char const* src);
QUILLO_EXPORTED void safeWcscat(wchar_t* dst, int size, wchar_t const* src);
