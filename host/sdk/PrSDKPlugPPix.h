// The host's older functions for frames; only their table's address is known here.
#pragma once

#include "PrSDKTypes.h"

typedef struct PlugppixFuncs PlugppixFuncs;
typedef PlugppixFuncs* PlugppixFuncsPtr;
