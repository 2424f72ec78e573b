// From two run-time bools and the processor to one instance of a kernel body.
#pragma once

#include "lib/format_conversion/detail/processor.h"

namespace Processing::FXlib::format_conversion::detail {

// Kernel::run<processor, src_aligned, dst_aligned, flags...> for this call. Only the narrow build tells aligned from
// unaligned: the wide ones ask for 16-byte alignment at most and always use unaligned accesses.
template <class Kernel, bool... flags>
auto by_alignment(bool src_aligned, bool dst_aligned)
{
#if defined(__x86_64__)
    switch (chosen()) {
    case processor::avx512:
        if constexpr (Kernel::widest == processor::avx512)
            return &Kernel::template run<processor::avx512, false, false, flags...>;
        [[fallthrough]];
    case processor::avx2:
        return &Kernel::template run<processor::avx2, false, false, flags...>;
    case processor::ssse3:
        break;
    }
#endif
    if (src_aligned)
        return dst_aligned ? &Kernel::template run<processor::ssse3, true, true, flags...>
                           : &Kernel::template run<processor::ssse3, true, false, flags...>;
    return dst_aligned ? &Kernel::template run<processor::ssse3, false, true, flags...>
                       : &Kernel::template run<processor::ssse3, false, false, flags...>;
}

} // namespace Processing::FXlib::format_conversion::detail
