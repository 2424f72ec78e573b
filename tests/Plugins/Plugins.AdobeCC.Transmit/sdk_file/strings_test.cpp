#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/strings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace {

using testing::ElementsAre;

std::array<prUTF16Char, 6> converted(wchar_t const* text)
{
    std::array<prUTF16Char, 6> units;
    units.fill(0xEEEE);
    copyConvertStringLiteralIntoUTF16(text, units.data());
    return units;
}

TEST(CopyConvertStringLiteralIntoUTF16, WritesUnitsAndATerminator)
{
    EXPECT_THAT(converted(L"abc"), ElementsAre('a', 'b', 'c', 0, 0xEEEE, 0xEEEE));
    EXPECT_THAT(converted(L""), ElementsAre(0, 0xEEEE, 0xEEEE, 0xEEEE, 0xEEEE, 0xEEEE));
    EXPECT_THAT(converted(L"\u00E4\uFFFD"), ElementsAre(0xE4, 0xFFFD, 0, 0xEEEE, 0xEEEE, 0xEEEE));
}

TEST(CopyConvertStringLiteralIntoUTF16, CutsAtAsManyUnitsAsThereAreCharacters)
{
    // U+1F3A5 is D83C DFA5.
    EXPECT_THAT(converted(L"\U0001F3A5ab"), ElementsAre(0xD83C, 0xDFA5, 'a', 0, 0xEEEE, 0xEEEE));
    EXPECT_THAT(converted(L"a\U0001F3A5"), ElementsAre('a', 0xD83C, 0, 0xEEEE, 0xEEEE, 0xEEEE));
    EXPECT_THAT(converted(L"\U0010FFFF\U00010000"), ElementsAre(0xDBFF, 0xDFFF, 0, 0xEEEE, 0xEEEE, 0xEEEE));
}

TEST(SafeStrCpy, CopiesTheWholeTextWhateverTheSize)
{
    char text[] = "xxxxxxxx";
    safeStrCpy(text, 2, "quillo");
    EXPECT_STREQ(text, "quillo");
    EXPECT_EQ(text[7], 'x');
}

TEST(SafeWcscat, AppendsTheWholeTextWhateverTheSize)
{
    wchar_t text[12] = L"quillo";
    safeWcscat(text, 0, L" out");
    EXPECT_STREQ(text, L"quillo out");
}

} // namespace
