// The host's older functions for timelines; only their table's address is known here.
#pragma once

#include "PrSDKTypes.h"

typedef struct PlugTimelineFuncs PlugTimelineFuncs;
typedef PlugTimelineFuncs* PlugTimelineFuncsPtr;
