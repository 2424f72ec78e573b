// Marks what the module lets out; exports.txt lists the same names.
#pragma once

#define QUILLO_EXPORTED __attribute__((visibility("default")))
