// Marks of this kind need nothing here: libc++ brings its own.
#pragma once

#include <AvailabilityMacros.h>
