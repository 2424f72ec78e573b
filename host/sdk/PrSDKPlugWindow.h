// The host's older functions for windows; only their table's address is known here.
#pragma once

#include "PrSDKTypes.h"

typedef struct PlugWindowFuncs PlugWindowFuncs;
typedef PlugWindowFuncs* PlugWindowFuncsPtr;
