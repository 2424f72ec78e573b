// The module's entry, through which the host reaches everything else, and its arithmetic helper.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/exported.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/audio.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/frame_rate.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/header.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/pixels.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/scaling.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/strings.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/video.h"
#include "host/adapter.h"

// [host thread] On load fills the twelve functions of *outModule and leaves the rest of it alone; on unload does
// nothing.
extern "C" QUILLO_EXPORTED tmResult xTransmitEntry(csSDK_int32 inInterfaceVersion, prBool inLoadModule,
                                                   piSuitesPtr piSuites, tmModule* outModule);

// Greatest common divisor; a when b is 0. Remainders keep the sign of the dividend, so the result may be negative.
QUILLO_EXPORTED long long gcd(long long a, long long b);
