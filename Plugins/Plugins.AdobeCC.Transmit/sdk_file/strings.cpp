#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/strings.h"

#include <cwchar>

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/utf16.h"

void copyConvertStringLiteralIntoUTF16(wchar_t const* in, prUTF16Char* out)
{
    auto const length = std::wcslen(in);
    quillo::utf16_from_wide(in, length, out, length);
    out[length] = 0;
}
