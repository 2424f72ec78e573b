// Every kernel: it converts one run of pixels. The first two flags say whether source and destinations may be accessed
// as aligned 16-byte vectors; results never depend on them.
#pragma once

#include "lib/format_conversion/line/copy.h"
#include "lib/format_conversion/line/rgb_to_uyvy.h"
#include "lib/format_conversion/line/rgb_to_ycbcr444.h"
#include "lib/format_conversion/line/uyvy_a_to_uyvy.h"
#include "lib/format_conversion/line/uyvy_to_444.h"
#include "lib/format_conversion/line/uyvy_to_bgr.h"
#include "lib/format_conversion/line/uyvy_to_r_g_b.h"
#include "lib/format_conversion/line/uyvy_to_rgba_and_bgra.h"
#include "lib/format_conversion/line/ycbcr444_to_uyvy.h"
