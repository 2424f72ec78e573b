// The name of one stream of a stereoscopic or multi-stream source; null is the default stream.
#pragma once

typedef char const* PrSDKStreamLabel;
