// Selector of the conversion matrix, for the front ends that take it as an argument.
#pragma once

namespace Processing::FXlib::format_conversion {

enum e_ycbcr_color_space : int { ycbcr_601 = 601, ycbcr_709 = 709 };

} // namespace Processing::FXlib::format_conversion
