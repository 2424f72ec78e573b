// Every whole-picture conversion: one namespace a source layout, one function a target layout, components named in
// memory order. Nothing here allocates or fails, and but for black::alpha's first value nothing is kept; buffers are
// the caller's to size, and source and destination must not overlap. Any number of threads may convert at once.
#pragma once

#include "lib/format_conversion/L.h"
#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/alpha_u16.h"
#include "lib/format_conversion/bgr.h"
#include "lib/format_conversion/bgra.h"
#include "lib/format_conversion/bgrx.h"
#include "lib/format_conversion/black.h"
#include "lib/format_conversion/color_space.h"
#include "lib/format_conversion/p216.h"
#include "lib/format_conversion/rgba.h"
#include "lib/format_conversion/rgbx.h"
#include "lib/format_conversion/uyvy.h"
#include "lib/format_conversion/uyvy_a.h"
#include "lib/format_conversion/v210.h"
#include "lib/format_conversion/vuya.h"
#include "lib/format_conversion/vuyx.h"
#include "lib/format_conversion/y.h"
#include "lib/format_conversion/y_u_v.h"
#include "lib/format_conversion/y_uv.h"
#include "lib/format_conversion/ycbcra.h"
#include "lib/format_conversion/ycbcrx.h"
#include "lib/format_conversion/yuy2.h"
