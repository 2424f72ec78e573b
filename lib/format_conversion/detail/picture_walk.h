// From a picture to the runs that a kernel converts: the whole picture at once or line by line.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

#include <cstdint>
#include <type_traits>

namespace Processing::FXlib::format_conversion::detail {

// One plane of a call: first line, bytes from line to line, and the line length in bytes of a picture without gaps.
// A target whose kernel writes more than its line (a whole last pair) gives the bytes that it really writes as reach.
template <class Sample>
struct plane
{
    plane(Sample* first_line, int line_stride, long long tight_length, long long written)
        : first(first_line), stride(line_stride), tight(tight_length), reach(written)
    {
    }
    plane(Sample* first_line, int line_stride, long long tight_length)
        : plane(first_line, line_stride, tight_length, tight_length)
    {
    }

    static constexpr bool is_target = !std::is_const_v<Sample>;

    Sample* line(std::ptrdiff_t n) const
    {
        using byte = std::conditional_t<is_target, unsigned char, unsigned char const>;
        using nothing = std::conditional_t<is_target, void, void const>;
        return static_cast<Sample*>(static_cast<nothing*>(reinterpret_cast<byte*>(first) + n * stride));
    }

    // Lines that do not reach into one another may be written in any order.
    bool any_order() const { return !is_target || reach <= (stride < 0 ? -static_cast<long long>(stride) : stride); }

    bool streamable() const
    {
        return !is_target ||
               ((reinterpret_cast<std::uintptr_t>(first) | static_cast<std::uintptr_t>(stride)) & 15) == 0;
    }

    Sample* first;
    int stride;
    long long tight;
    long long reach;
};

// The upper and the lower lines of a plane that is converted two lines at a time.
template <class Sample>
plane<Sample> upper(Sample* first, int stride, long long tight)
{
    return {first, stride * 2, tight};
}
template <class Sample>
plane<Sample> lower(Sample* first, int stride, long long tight)
{
    return {first + stride, stride * 2, tight};
}

// The last of so many lines.
template <class Sample>
Sample* last(Sample* first, int stride, int lines)
{
    return first + static_cast<std::ptrdiff_t>(lines - 1) * stride;
}

// Bytes of as many four-byte pixels.
inline int four_bytes_each(int width) { return static_cast<int>(static_cast<unsigned>(width) * 4); }

// Bytes of a UYVY line that ends with a whole pair.
inline long long whole_pairs(int width) { return (width + 1ll) / 2 * 4; }

// Sources and targets of no more bytes than this are taken to be in a core's own caches.
inline constexpr long long cached_bytes = 512 << 10;

template <class First, class... Rest>
int first_stride(plane<First> first, plane<Rest>...)
{
    return first.stride;
}

enum class runs { joined, lines };

// Gives kernel(first bytes of each plane..., pixels, access) each run, the planes in the kernel's own order with a
// source first: every line, or the whole picture where lines may join and follow each other without a gap. Returns the
// AND of the runs' results where the kernel has any: all ones for a picture without lines.
template <runs by = runs::joined, class Kernel, class... Samples>
auto walk(int width, int height, Kernel kernel, plane<Samples>... planes)
{
    using result = std::invoke_result_t<Kernel, Samples*..., int, line::access>;
    if constexpr (!std::is_void_v<result>) {
        auto all = static_cast<result>(-1);
        walk<by>(
            width, height, [&](Samples*... lines, int count, line::access how) { all &= kernel(lines..., count, how); },
            planes...);
        return all;
    } else {
        if (height < 1)
            return;
        if (width < 0)
            width = 0;
        line::access how;
        how.streaming = ((plane<Samples>::is_target ? planes.tight * height : 0) + ...) >= streaming_from() &&
                        (planes.streamable() && ...);
        bool const cached = (planes.tight + ...) * height <= cached_bytes;
        if (cached)
            how.ahead = 0;
        if (by == runs::joined && (height == 1 || ((planes.stride == planes.tight) && ...))) {
            kernel(planes.first..., static_cast<int>(static_cast<unsigned>(width) * static_cast<unsigned>(height)),
                   how);
        } else {
            int const stride = first_stride(planes...);
            bool const backwards = stride < 0 && in_source_order() && (planes.any_order() && ...);
            if (!cached)
                how.ahead = backwards ? -static_cast<std::ptrdiff_t>(stride) : stride;
            for (std::ptrdiff_t n = 0; n < height; ++n)
                kernel(planes.line(backwards ? height - 1 - n : n)..., width, how);
        }
        if (how.streaming)
            line::fence_streamed();
    }
}

} // namespace Processing::FXlib::format_conversion::detail
