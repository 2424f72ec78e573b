// A file or an address as a source: whatever GStreamer decodes.
#pragma once

#include "tools/stand_in_host/source.h"

#include <memory>
#include <string>

namespace quillo::stand_in {

// Opens a file by its path, anything with "://" as an address. Throws input_error where it cannot be read or has no
// video. gst_init must have been called.
std::unique_ptr<source> open_media(std::string const& path_or_uri, bool with_audio);

} // namespace quillo::stand_in
