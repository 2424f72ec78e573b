// Tests that choose between the aligned and the unaligned kernels. A stride may be negative.
#pragma once

#include <cstdint>

namespace Processing::FXlib::format_conversion {

// True when both the address and the stride are multiples of 16.
inline bool is_aligned(unsigned char const* data, int stride)
{
    return ((reinterpret_cast<std::uintptr_t>(data) | static_cast<std::uintptr_t>(stride)) & 15) == 0;
}

inline bool is_aligned(unsigned short const* data, int stride)
{
    return is_aligned(reinterpret_cast<unsigned char const*>(data), stride);
}

inline bool is_aligned(unsigned char const* data, int stride, unsigned char const* data_2, int stride_2)
{
    return is_aligned(data, stride) && is_aligned(data_2, stride_2);
}

// Sixteen bytes here too: the wide kernels access memory unaligned and ask for no more than the narrow ones.
inline bool is_aligned_avx2(unsigned char const* data, int stride) { return is_aligned(data, stride); }

inline bool is_aligned_avx2(unsigned char const* data, int stride, unsigned char const* data_2, int stride_2)
{
    return is_aligned(data, stride, data_2, stride_2);
}

} // namespace Processing::FXlib::format_conversion
