// Names and text records, without a network.
#include "publisher/discovery/discovery.h"
#include "publisher/discovery/text_records.h"

#include <gtest/gtest.h>

namespace quillo::discovery {

TEST(instance_name, NamesMachineAndSource)
{
    EXPECT_EQ(instance_name("studio3", "Adobe Premiere Pro"), "studio3 (Adobe Premiere Pro)");
    EXPECT_EQ(instance_name("studio3.example.org", "Adobe Premiere Pro"), "studio3 (Adobe Premiere Pro)");
    EXPECT_EQ(instance_name("", "x"), " (x)");
}

TEST(instance_name, IsCutBetweenCharacters)
{
    std::string const longest(60, 'm');
    EXPECT_EQ(instance_name(longest, "Adobe Premiere Pro"), longest + " (A");
    EXPECT_EQ(instance_name("m", std::string(59, 's')), "m (" + std::string(59, 's') + ")");
    EXPECT_EQ(instance_name("m", std::string(60, 's')), "m (" + std::string(60, 's'));
    // Two bytes a character: the 63rd byte would be half of one.
    std::string umlauts;
    for (int count = 0; count < 40; ++count)
        umlauts += "\xC3\xBC";
    auto const cut = instance_name("ab", umlauts);
    EXPECT_EQ(cut.size(), 62u);
    EXPECT_EQ(cut, "ab (" + umlauts.substr(0, 58));
}

TEST(text_records, KeepKeysAndValues)
{
    std::map<std::string, std::string> const txt{{"path", "/adobe-premiere-pro"},
                                                 {"name", "Adobe Premiere Pro"},
                                                 {"id", "0123"},
                                                 {"empty", ""},
                                                 {"equal", "a=b=c"}};
    EXPECT_EQ(from_list(to_list(txt).get()), txt);
    EXPECT_EQ(from_list(nullptr), (std::map<std::string, std::string>{}));
}

TEST(text_records, CutValuesThatDoNotFit)
{
    std::map<std::string, std::string> const txt{{"k", std::string(300, 'v')},
                                                 {std::string(254, 'l'), "gone"},
                                                 {std::string(255, 'x'), "gone with its key"},
                                                 {"", "x"}};
    auto const read = from_list(to_list(txt).get());
    EXPECT_EQ(read.at("k"), std::string(253, 'v'));
    EXPECT_EQ(read.at(std::string(254, 'l')), "");
    EXPECT_EQ(read.size(), 2u);
}

TEST(text_records, ReadWhatOthersWrite)
{
    text_list_ptr list{avahi_string_list_new("flag", "path=/a", "=nothing", "path=/b", nullptr)};
    auto const read = from_list(list.get());
    EXPECT_EQ(read.size(), 2u);
    EXPECT_EQ(read.at("flag"), "");
    // Avahi keeps lists in reverse: the record written last is read first.
    EXPECT_EQ(read.at("path"), "/b");
}

} // namespace quillo::discovery
