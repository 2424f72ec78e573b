#include "lib/format_conversion/line/uyvy_to_rgba_and_bgra.h"

#include "lib/format_conversion/line/bodies/rgb_64.h"
#include "lib/format_conversion/line/instances.h"

#include <cstring>

#include <utility>

namespace Processing::FXlib::format_conversion::line {

namespace {

// Where the alphas of a block come from, as vectors of eight 16-bit values a lane and one by one.
struct always_255
{
    template <class V>
    QUILLO_INLINE V words(std::ptrdiff_t, std::ptrdiff_t) const
    {
        static constexpr lane<unsigned short> opaque{255};
        return V::repeat(opaque);
    }
    unsigned char operator[](std::ptrdiff_t) const { return 255; }
};

template <processor p>
struct alpha_plane
{
    unsigned char const* first;

    template <class V>
    QUILLO_INLINE V words(std::ptrdiff_t at, std::ptrdiff_t ahead) const
    {
        prefetch<p, 8 * V::lanes>(first + at, ahead);
        return zip_low_8(V::load_low_halves(first + at), V::zero());
    }
    unsigned char operator[](std::ptrdiff_t at) const { return first[at]; }
};

template <processor p, bool src_aligned, bool dst_aligned, bool matrix, bool order, class Alpha>
QUILLO_INLINE inline void four_bytes(unsigned char const* src, Alpha alpha, unsigned char* dst, int count, access how)
{
    auto const in_order = [](auto r, auto b) { return order == rgba_order ? std::pair{r, b} : std::pair{b, r}; };

    auto i = blocks<p, 8>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        if constexpr (fetched_ahead<p, streaming>)
            prefetch<p, 16 * V::lanes>(src + at * 2, how.ahead);
        auto const [r, g, b] = rgb_64<matrix>(V::template load<src_aligned>(src + at * 2));
        auto const [first, third] = in_order(r, b);
        auto const first_third = pack_u8(first, third);
        auto const g_a = pack_u8(g, alpha.template words<V>(at, fetched_ahead<p, streaming> ? how.ahead / 2 : 0));
        auto const low = zip_low_8(first_third, g_a), high = zip_high_8(first_third, g_a); // B G B G .. | R A R A ..
        V::template store_pairs<dst_aligned, streaming>(dst + at * 4, zip_low_16(low, high), zip_high_16(low, high));
    });

    for (; i + 2 <= count; i += 2)
        for (auto at = i; at < i + 2; ++at) {
            auto const [r, g, b] = rgb_64<p, matrix>(src[at * 2 + 1], src[i * 2], src[i * 2 + 2]);
            auto const [first, third] = in_order(r, b);
            unsigned char const pixel[] = {first, g, third, alpha[at]};
            std::memcpy(dst + at * 4, pixel, 4);
        }
}

} // namespace

template <processor p, bool src_aligned, bool dst_aligned, bool matrix, bool order>
void uyvy_to_four_bytes::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    four_bytes<p, src_aligned, dst_aligned, matrix, order>(src, always_255{}, dst, count, how);
}

template <processor p, bool src_aligned, bool dst_aligned, bool matrix, bool order>
void uyvy_a_to_four_bytes::run(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count,
                               access how)
{
    four_bytes<p, src_aligned, dst_aligned, matrix, order>(src, alpha_plane<p>{alpha}, dst, count, how);
}

// clang-format off
#define BODY(...) \
    template void uyvy_to_four_bytes::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access); \
    template void uyvy_a_to_four_bytes::run<here, __VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(2, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
