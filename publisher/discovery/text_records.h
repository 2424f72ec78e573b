// What a service says of itself: keys with values.
#pragma once

#include "publisher/discovery/avahi_faces.h"

#include <map>
#include <string>

namespace quillo::discovery {

// Values are cut to what a record holds, between characters; a key that does not fit by itself is left out.
text_list_ptr to_list(std::map<std::string, std::string> const&);

// Keys without a value have an empty one; of a key that stands there twice the first counts.
std::map<std::string, std::string> from_list(AvahiStringList*);

} // namespace quillo::discovery
