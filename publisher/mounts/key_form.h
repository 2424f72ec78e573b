// /raw+key: the fill as UYVY and, beside it in a second stream, the key as UYVY: alpha as luma from 0 to 255, both
// chroma bytes 128. Alpha is straight. Where a source sends none the key is 255 everywhere.
#pragma once

#include "publisher/mounts/raw_form.h"

namespace quillo::publisher {

std::unique_ptr<raw_form> make_key_form();

} // namespace quillo::publisher
