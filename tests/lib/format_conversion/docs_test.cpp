#include "tests/support/conversions.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace quillo::conversions {
namespace {

TEST(Docs, NameEveryConversion)
{
    std::ifstream const file{QUILLO_SOURCE_FOLDER "/docs/layouts.md"};
    std::stringstream text;
    text << file.rdbuf();
    for (conversion const& row : all())
        EXPECT_NE(text.str().find('`' + std::string{row.name} + '`'), std::string::npos) << row.name;
}

} // namespace
} // namespace quillo::conversions
