#include "lib/format_conversion/line/v210_to_uyvy.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"
#include <cstring>

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned>
void narrow_v210::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    static constexpr lane<unsigned> first_component{0xFF}, second_component{0xFF00}, third_component{0xFF0000};
    static constexpr lane<unsigned char> three_of_four{0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 128, 128, 128, 128};

    // The last group of a run is never whole, so a block ends before it.
    auto i = blocks<p, 24>(count - 1, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        auto const* const groups = src + at / 6 * 16;
        if constexpr (fetched_ahead<p, streaming>)
            prefetch<p, 64 * V::lanes>(groups, how.ahead);
        auto const four_groups = [&](int n) {
            auto const words = V::template load<src_aligned>(groups + n * 16 * V::lanes);
            auto const components = (shift_right_u32(words, by<2>) & V::repeat(first_component)) |
                                    (shift_right_u32(words, by<4>) & V::repeat(second_component)) |
                                    (shift_right_u32(words, by<6>) & V::repeat(third_component));
            return shuffle(components, V::repeat(three_of_four));
        };
        V::template store_twelves<dst_aligned, streaming>(dst + at * 2, four_groups(0), four_groups(1), four_groups(2),
                                                          four_groups(3));
    });

    for (; count - i >= 3; i += 6) {
        unsigned char const* const group = src + i / 6 * 16;
        auto const left = count - i;
        std::ptrdiff_t const pairs = left < 5 ? 1 : left < 7 ? 2 : 3;
        unsigned char uyvy[12];
        for (int n = 0; n < 12; ++n) {
            unsigned word;
            std::memcpy(&word, group + n / 3 * 4, sizeof word);
            uyvy[n] = static_cast<unsigned char>(word >> (n % 3 * 10 + 2));
        }
        std::memcpy(dst + i * 2, uyvy, static_cast<std::size_t>(pairs * 4));
    }
}

// clang-format off
#define BODY(...) template void narrow_v210::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
