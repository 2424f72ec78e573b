// Names for the flag that tells the two orders of RGB pixels apart.
#pragma once

namespace Processing::FXlib::format_conversion::line {

inline constexpr bool bgra_order = false;
inline constexpr bool rgba_order = true;

} // namespace Processing::FXlib::format_conversion::line
