// A key file as read, with the lines at which everything stands. GLib's parser decides what is a key file and what a
// value means; only the lines are counted here.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillo::publisher {

// Something that is wrong with a file, in words.
struct file_problem
{
    int line; // from 1; 0: the file as a whole
    std::string text;
};

struct key_file
{
    struct entry
    {
        std::string group;
        std::string key;
        std::optional<std::string> value; // none: not written as GLib wants it, problems says more
        int line;
    };
    struct group
    {
        std::string name;
        int line;
    };

    std::vector<group> groups;
    std::vector<entry> entries; // a key that is given twice is here twice
    std::vector<file_problem> problems;
};

key_file parse_key_file(std::string const& text);

} // namespace quillo::publisher
