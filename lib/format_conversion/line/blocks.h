// From a run of pixels to its blocks: what every kernel body has in common.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"
#include "lib/format_conversion/line/vec.h"

#include <cstddef>

namespace Processing::FXlib::format_conversion::line {

template <processor p>
constexpr int lanes_of = p == processor::avx512 ? 4
                         : p == processor::avx2 ? 2
                                                : 1;

template <processor p>
using widest_vec = vec<p, lanes_of<p>>;

// Written only when it changes, so that threads do not fight for the line.
template <processor p>
QUILLO_INLINE inline void note_ran()
{
    if (__atomic_load_n(&detail::last_reported, __ATOMIC_RELAXED) != static_cast<int>(p))
        __atomic_store_n(&detail::last_reported, static_cast<int>(p), __ATOMIC_RELAXED);
}

// Whether fetching ahead pays between one source and one target. Processors that have AVX-512 read ahead better by
// themselves there, except for streamed stores.
template <processor p, bool streaming>
constexpr bool fetched_ahead = streaming || p != processor::avx512;

// Fetches the cache lines of so many bytes so far ahead, if at all.
template <processor p, int bytes>
QUILLO_INLINE inline void prefetch(unsigned char const* at, std::ptrdiff_t ahead)
{
    if (ahead != 0)
        for (int line = 0; line < bytes; line += 64)
            _mm_prefetch(at + ahead + line, _MM_HINT_T0);
}

// The string instructions neither fetch the lines that they fill nor push them out of the caches. Short runs do not pay
// for their start.
template <processor p>
bool by_string(std::ptrdiff_t bytes, access how)
{
    return p != processor::ssse3 && !how.streaming && bytes >= 256 &&
           __atomic_load_n(&detail::strings_are_fast, __ATOMIC_RELAXED);
}

QUILLO_INLINE inline void move_string(unsigned char const* from, unsigned char* to, std::ptrdiff_t bytes)
{
#if defined(__x86_64__)
    asm volatile("rep movsb" : "+S"(from), "+D"(to), "+c"(bytes) : : "memory");
#else
    __builtin_memcpy(to, from, bytes);
#endif
}

// Eight bytes, the lowest first, again and again.
QUILLO_INLINE inline void fill_string(unsigned char* to, unsigned long long pattern, std::ptrdiff_t times)
{
#if defined(__x86_64__)
    asm volatile("rep stosq" : "+D"(to), "+c"(times) : "a"(pattern) : "memory");
#else
    for (; times > 0; --times, to += 8)
        __builtin_memcpy(to, &pattern, 8);
#endif
}

// body.operator()<V, streaming>(i) for every whole block of `pixels` of the run, i being its first pixel: V::lanes
// blocks at once while there are so many, then one by one. Returns how many pixels that was.
template <processor p, int pixels, bool streaming, class Body>
QUILLO_INLINE inline std::ptrdiff_t blocks_stored(std::ptrdiff_t count, Body const& body)
{
    constexpr std::ptrdiff_t step = std::ptrdiff_t{pixels} * lanes_of<p>;
    std::ptrdiff_t i = 0;
    for (; i + step <= count; i += step)
        body.template operator()<widest_vec<p>, streaming>(i);
    if constexpr (1 < lanes_of<p>)
        for (; i + pixels <= count; i += pixels)
            body.template operator()<vec<p, 1>, streaming>(i);
    return i;
}

template <processor p, int pixels, class Body>
QUILLO_INLINE inline std::ptrdiff_t blocks(std::ptrdiff_t count, access how, Body const& body)
{
    note_ran<p>();
    return how.streaming ? blocks_stored<p, pixels, true>(count, body) : blocks_stored<p, pixels, false>(count, body);
}

// body.operator()<V, streaming>(byte offset) for every vector of a run's whole blocks of so many bytes, several in a
// pass: what does little with each vector would spend its time on counting them. Returns how many bytes that was.
template <processor p, int block, class Body>
QUILLO_INLINE inline std::ptrdiff_t vectors(std::ptrdiff_t bytes, access how, Body const& body)
{
    auto const by_eight = blocks<p, 128>(bytes, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        for (int n = 0; n < 8; ++n)
            body.template operator()<V, streaming>(at + 16 * V::lanes * n);
    });
    return by_eight + blocks<p, block>(bytes - by_eight, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
               for (int n = 0; n < block / 16; ++n)
                   body.template operator()<V, streaming>(by_eight + at + 16 * V::lanes * n);
           });
}

// A level limited to what a byte holds. Nothing of the standard library's stands here: its inline functions have one
// symbol for all processors.
QUILLO_INLINE inline unsigned char saturate(int level)
{
    return static_cast<unsigned char>(level < 0 ? 0 : level > 255 ? 255 : level);
}

// A running AND of vectors of either width of blocks().
template <processor p>
class running_and
{
  public:
    QUILLO_INLINE void add(widest_vec<p> v) { wide_ = wide_ & v; }

    template <class V>
    QUILLO_INLINE void add(V v)
    {
        narrow_ = narrow_ & v;
    }

    QUILLO_INLINE vec<p, 1> result() const { return wide_.fold_and() & narrow_; }
    // Of vectors put together from pairs of load_two().
    QUILLO_INLINE vec<p, 1> result_in_order() const { return in_order(wide_).fold_and() & narrow_; }

  private:
    widest_vec<p> wide_ = widest_vec<p>::ones();
    vec<p, 1> narrow_ = vec<p, 1>::ones();
};

} // namespace Processing::FXlib::format_conversion::line
