// All that a configuration file may say: one row a key.
#pragma once

#include "publisher/config/configuration.h"

#include <span>

namespace quillo::publisher {

struct option
{
    char const* group;
    char const* key;
    std::string allowed; // in words, for messages and the manual
    bool secret;         // its value is never repeated
    bool (*take)(configuration&, std::string const& value);
};

std::span<option const> options();

// Of the known words the one that was probably meant; empty when none comes near.
std::string nearest(std::string const& word, std::vector<std::string> const& known);

} // namespace quillo::publisher
