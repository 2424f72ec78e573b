// Calls any front end or kernel with the values of a call: pointers take the next plane, an int right after a pointer
// is that plane's stride (in front ends), the other ints are width, height and option.
#pragma once

#include "lib/format_conversion/color_space.h"
#include "tests/support/call.h"

#include <tuple>
#include <type_traits>

namespace quillo::conversions {

class argument_feeder
{
  public:
    argument_feeder(call const& c, bool with_strides) : c_(c), with_strides_(with_strides) {}

    template <class T>
    T next()
    {
        if constexpr (std::is_same_v<T, bool*>) {
            return c_.all_opaque;
        } else if constexpr (std::is_same_v<T, bool>) {
            return c_.option != 0;
        } else if constexpr (std::is_same_v<T, Processing::FXlib::format_conversion::e_ycbcr_color_space>) {
            return static_cast<T>(c_.option);
        } else if constexpr (std::is_pointer_v<T>) {
            stride_follows_ = with_strides_;
            return static_cast<T>(static_cast<void*>(c_.planes[planes_++].data));
        } else {
            static_assert(std::is_same_v<T, int>);
            if (stride_follows_) {
                stride_follows_ = false;
                return c_.planes[planes_ - 1].stride;
            }
            int const after[] = {c_.width, c_.height, c_.option};
            return after[ints_++];
        }
    }

  private:
    call const& c_;
    bool with_strides_;
    unsigned planes_ = 0;
    unsigned ints_ = 0;
    bool stride_follows_ = false;
};

template <class R, class... Arguments>
void invoke_with(R (*function)(Arguments...), call const& c, bool with_strides)
{
    argument_feeder feeder{c, with_strides};
    // Braces: the arguments are fed from left to right.
    std::tuple<Arguments...> const arguments{feeder.next<Arguments>()...};
    if constexpr (std::is_same_v<std::remove_const_t<R>, bool>) {
        bool const result = std::apply(function, arguments);
        if (c.all_opaque)
            *c.all_opaque = result;
    } else {
        std::apply(function, arguments);
    }
}

template <auto front_end>
void invoke(call const& c)
{
    invoke_with(front_end, c, true);
}

template <auto kernel>
void invoke_kernel(call const& c)
{
    invoke_with(kernel, c, false);
}

} // namespace quillo::conversions
