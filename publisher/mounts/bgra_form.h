// /bgra: fill and alpha in one, as "BGRA", for receivers that take it so. Alpha is straight; where a source sends none
// it is 255 everywhere. The fill of a 4:2:2 source is converted with BT.709.
#pragma once

#include "publisher/mounts/raw_form.h"

namespace quillo::publisher {

std::unique_ptr<raw_form> make_bgra_form();

} // namespace quillo::publisher
