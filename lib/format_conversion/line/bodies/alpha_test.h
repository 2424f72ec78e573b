// Whether byte 3 of every four-byte pixel is 255.
#pragma once

#include "lib/format_conversion/line/blocks.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p>
class alpha_test
{
  public:
    template <class V>
    QUILLO_INLINE void add(V pixels)
    {
        vectors_.add(pixels);
    }
    QUILLO_INLINE void add_alpha(unsigned char alpha) { rest_ &= alpha; }

    // True where nothing was added.
    QUILLO_INLINE bool opaque() const
    {
        static constexpr lane<unsigned> alpha_mask_128{0xFF000000u};
        auto const alphas = vectors_.result() & vec<p, 1>::repeat(alpha_mask_128);
        return (alphas.mask_of_255() & 0x8888) == 0x8888 && rest_ == 255;
    }

  private:
    running_and<p> vectors_;
    unsigned rest_ = 255;
};

} // namespace Processing::FXlib::format_conversion::line
