#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/strings.h"

#include <cstring>
#include <cwchar>

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/utf16.h"

void copyConvertStringLiteralIntoUTF16(wchar_t const* in, prUTF16Char* out)
{
    auto const length = std::wcslen(in);
    quillo::utf16_from_wide(in, length, out, length);
    out[length] = 0;
}

void safeStrCpy(char* dst, int /*size*/, char const* src) { std::strcpy(dst, src); }

void safeWcscat(wchar_t* dst, int /*size*/, wchar_t const* src) { std::wcscat(dst, src); }
