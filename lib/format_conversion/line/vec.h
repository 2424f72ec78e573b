// Vectors of one to four lanes of 16 bytes. Every operation works on each lane by itself, so a kernel written for one
// lane converts as many blocks side by side as there are lanes, with the same bytes. The one file that knows
// intrinsics.
//
// All of it is a template on the processor that the file including it is compiled for: code for a wide processor never
// shares a symbol with code for a narrow one.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

#include <cstddef>
#include <cstdint>

#if defined(__SSSE3__)
#include <immintrin.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/ssse3.h>
#endif

#if !defined(QUILLO_PROCESSOR)
#define QUILLO_PROCESSOR ssse3
#endif

#define QUILLO_INLINE [[gnu::always_inline]]

namespace Processing::FXlib::format_conversion::line {

using detail::processor;

// The processor that this file is being compiled for.
constexpr processor here = processor::QUILLO_PROCESSOR;

template <processor p, int lanes>
struct vec;

// Constants of a lane, a shorter pattern repeated until it fills sixteen bytes: lane<short> weights{16, 128}. They
// stand in memory as often as the widest vector has lanes, so that each width takes them whole, straight into an
// instruction.
template <class T>
struct alignas(64) lane
{
    T value[64 / sizeof(T)];

    template <class... Ts>
    constexpr lane(Ts... pattern) : value{}
    {
        T const given[] = {static_cast<T>(pattern)...};
        for (std::size_t i = 0; i < 64 / sizeof(T); ++i)
            value[i] = given[i % sizeof...(pattern)];
    }
};

constexpr lane<signed char> fourth_bytes{3, 7, 11, 15, -1, -1, -1, -1};

template <class V>
struct vec_pair
{
    V first, second;
};

// Streamed stores are promised no more than sixteen-byte alignment. Whole vectors are faster where they fit.
template <processor p>
QUILLO_INLINE inline bool is_multiple(void const* address, std::uintptr_t of)
{
    return reinterpret_cast<std::uintptr_t>(address) % of == 0;
}

// Operations that differ between the widths in nothing but the prefix.
// clang-format off
#define QUILLO_LANEWISE(prefix, si)                                                                                      \
    QUILLO_INLINE friend vec operator&(vec a, vec b) { return {prefix##_and_##si(a.v, b.v)}; }                           \
    QUILLO_INLINE friend vec operator|(vec a, vec b) { return {prefix##_or_##si(a.v, b.v)}; }                            \
    QUILLO_INLINE friend vec operator^(vec a, vec b) { return {prefix##_xor_##si(a.v, b.v)}; }                           \
    QUILLO_INLINE friend vec shuffle(vec a, vec order) { return {prefix##_shuffle_epi8(a.v, order.v)}; }                 \
    QUILLO_INLINE friend vec add_8(vec a, vec b) { return {prefix##_add_epi8(a.v, b.v)}; }                               \
    QUILLO_INLINE friend vec sub_8(vec a, vec b) { return {prefix##_sub_epi8(a.v, b.v)}; }                               \
    QUILLO_INLINE friend vec adds_u8(vec a, vec b) { return {prefix##_adds_epu8(a.v, b.v)}; }                            \
    QUILLO_INLINE friend vec subs_u8(vec a, vec b) { return {prefix##_subs_epu8(a.v, b.v)}; }                            \
    QUILLO_INLINE friend vec add_16(vec a, vec b) { return {prefix##_add_epi16(a.v, b.v)}; }                             \
    QUILLO_INLINE friend vec sub_16(vec a, vec b) { return {prefix##_sub_epi16(a.v, b.v)}; }                             \
    QUILLO_INLINE friend vec add_32(vec a, vec b) { return {prefix##_add_epi32(a.v, b.v)}; }                             \
    QUILLO_INLINE friend vec sub_32(vec a, vec b) { return {prefix##_sub_epi32(a.v, b.v)}; }                             \
    QUILLO_INLINE friend vec min_16(vec a, vec b) { return {prefix##_min_epi16(a.v, b.v)}; }                             \
    QUILLO_INLINE friend vec mul_low_16(vec a, vec b) { return {prefix##_mullo_epi16(a.v, b.v)}; }                       \
    QUILLO_INLINE friend vec mul_high_u16(vec a, vec b) { return {prefix##_mulhi_epu16(a.v, b.v)}; }                     \
    QUILLO_INLINE friend vec mul_high_16(vec a, vec b) { return {prefix##_mulhi_epi16(a.v, b.v)}; }                      \
    QUILLO_INLINE friend vec mul_add_16(vec a, vec b) { return {prefix##_madd_epi16(a.v, b.v)}; }                        \
    /* unsigned bytes of a, signed bytes of b */                                                                         \
    QUILLO_INLINE friend vec mul_add_u8(vec a, vec b) { return {prefix##_maddubs_epi16(a.v, b.v)}; }                     \
    QUILLO_INLINE friend vec pack_u8(vec a, vec b) { return {prefix##_packus_epi16(a.v, b.v)}; }                         \
    QUILLO_INLINE friend vec pack_16(vec a, vec b) { return {prefix##_packs_epi32(a.v, b.v)}; }                          \
    QUILLO_INLINE friend vec zip_low_8(vec a, vec b) { return {prefix##_unpacklo_epi8(a.v, b.v)}; }                      \
    QUILLO_INLINE friend vec zip_high_8(vec a, vec b) { return {prefix##_unpackhi_epi8(a.v, b.v)}; }                     \
    QUILLO_INLINE friend vec zip_low_16(vec a, vec b) { return {prefix##_unpacklo_epi16(a.v, b.v)}; }                    \
    QUILLO_INLINE friend vec zip_high_16(vec a, vec b) { return {prefix##_unpackhi_epi16(a.v, b.v)}; }                   \
    QUILLO_INLINE friend vec zip_low_32(vec a, vec b) { return {prefix##_unpacklo_epi32(a.v, b.v)}; }                    \
    QUILLO_INLINE friend vec zip_high_32(vec a, vec b) { return {prefix##_unpackhi_epi32(a.v, b.v)}; }                   \
    QUILLO_INLINE friend vec zip_low_64(vec a, vec b) { return {prefix##_unpacklo_epi64(a.v, b.v)}; }                    \
    QUILLO_INLINE friend vec zip_high_64(vec a, vec b) { return {prefix##_unpackhi_epi64(a.v, b.v)}; }                   \
    template <int n> QUILLO_INLINE friend vec shift_left_16(vec a, count_of<n>) { return {prefix##_slli_epi16(a.v, n)}; }  \
    template <int n> QUILLO_INLINE friend vec shift_right_u16(vec a, count_of<n>) { return {prefix##_srli_epi16(a.v, n)}; } \
    template <int n> QUILLO_INLINE friend vec shift_right_16(vec a, count_of<n>) { return {prefix##_srai_epi16(a.v, n)}; }  \
    template <int n> QUILLO_INLINE friend vec shift_left_32(vec a, count_of<n>) { return {prefix##_slli_epi32(a.v, n)}; }  \
    template <int n> QUILLO_INLINE friend vec shift_right_u32(vec a, count_of<n>) { return {prefix##_srli_epi32(a.v, n)}; } \
    template <int n> QUILLO_INLINE friend vec shift_right_32(vec a, count_of<n>) { return {prefix##_srai_epi32(a.v, n)}; }
// clang-format on

// A shift count known when compiling: shift_right_16(a, by<6>).
template <int n>
struct count_of
{
};
template <int n>
constexpr count_of<n> by{};

template <processor p>
struct vec<p, 1>
{
    static constexpr int lanes = 1;
    __m128i v;

    QUILLO_LANEWISE(_mm, si128)

    QUILLO_INLINE static vec zero() { return {_mm_setzero_si128()}; }
    QUILLO_INLINE static vec ones() { return {_mm_set1_epi8(-1)}; }

    QUILLO_INLINE static vec of_eight(unsigned long long bytes)
    {
        return {_mm_set1_epi64x(static_cast<long long>(bytes))};
    }

    // The same 16 bytes in every lane.
    template <class T>
    QUILLO_INLINE static vec repeat(lane<T> const& bytes)
    {
        return {_mm_load_si128(static_cast<__m128i const*>(static_cast<void const*>(&bytes)))};
    }

    template <bool aligned>
    QUILLO_INLINE static vec load(void const* from)
    {
        auto const* const at = static_cast<__m128i const*>(from);
        return {aligned ? _mm_load_si128(at) : _mm_loadu_si128(at)};
    }

    // first: bytes 0..15 of each lane's 32, second: bytes 16..31.
    template <bool aligned>
    QUILLO_INLINE static vec_pair<vec> load_pairs(unsigned char const* from)
    {
        return {load<aligned>(from), load<aligned>(from + 16)};
    }

    // The same 32 bytes a lane in memory order, two whole vectors, which takes fewer instructions. What operations then
    // put together of the first's lanes (low halves) and the second's (high halves) comes out of order: in_order()
    // mends it.
    template <bool aligned>
    QUILLO_INLINE static vec_pair<vec> load_two(unsigned char const* from)
    {
        return load_pairs<aligned>(from);
    }
    QUILLO_INLINE friend vec in_order(vec a) { return a; }
    template <bool streaming>
    QUILLO_INLINE void store_low_halves_in_order(unsigned char* to) const
    {
        store_low_halves<streaming>(to);
    }

    // The same of 24 bytes a lane, twelve at the start of each lane and anything above; reads up to 16 bytes further.
    QUILLO_INLINE static vec_pair<vec> load_twelves(unsigned char const* from)
    {
        return {load<false>(from), load<false>(from + 12)};
    }

    // For each group of four unsigned bytes its sum with signed weights, in 16 bits: the groups of first, then those of
    // second. Two products must fit 16 bits signed; dot_u16's sums may be up to 65535 and not negative.
    QUILLO_INLINE friend vec dot_16(vec_pair<vec> a, vec weights)
    {
        return {_mm_hadd_epi16(mul_add_u8(a.first, weights).v, mul_add_u8(a.second, weights).v)};
    }
    QUILLO_INLINE friend vec dot_u16(vec_pair<vec> a, vec weights) { return dot_16(a, weights); }
    // In 32 bits, of one vector, added to start.
    QUILLO_INLINE friend vec dot_32(vec start, vec a, vec weights)
    {
        return {_mm_add_epi32(start.v, _mm_madd_epi16(mul_add_u8(a, weights).v, _mm_set1_epi16(1)))};
    }
    // a | (b & mask)
    QUILLO_INLINE friend vec or_masked(vec a, vec b, vec mask) { return a | (b & mask); }

    // Byte 3 of every four of a pair of load_two().
    template <bool streaming>
    QUILLO_INLINE static void store_fourth_bytes(unsigned char* to, vec_pair<vec> a)
    {
        vec const k_A_reorder = repeat(fourth_bytes);
        zip_low_32(shuffle(a.first, k_A_reorder), shuffle(a.second, k_A_reorder))
            .template store_low_halves<streaming>(to);
    }

    template <bool aligned, bool streaming>
    QUILLO_INLINE void store(void* to) const
    {
        auto* const at = static_cast<__m128i*>(to);
        if constexpr (streaming)
            _mm_stream_si128(at, v);
        else if constexpr (aligned)
            _mm_store_si128(at, v);
        else
            _mm_storeu_si128(at, v);
    }

    // Bytes 0..7 of each lane, as store_low_halves() leaves them; bytes 8..15 are anything.
    QUILLO_INLINE static vec load_low_halves(unsigned char const* from)
    {
        return {_mm_loadl_epi64(static_cast<__m128i const*>(static_cast<void const*>(from)))};
    }

    // a: bytes 0..15 of each lane's 32, 48 or 64, b: bytes 16..31, and so on.
    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_pairs(unsigned char* to, vec a, vec b)
    {
        a.store<aligned, streaming>(to);
        b.store<aligned, streaming>(to + 16);
    }
    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_triples(unsigned char* to, vec a, vec b, vec c)
    {
        store_pairs<aligned, streaming>(to, a, b);
        c.store<aligned, streaming>(to + 32);
    }
    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_quads(unsigned char* to, vec a, vec b, vec c, vec d)
    {
        store_pairs<aligned, streaming>(to, a, b);
        store_pairs<aligned, streaming>(to + 32, c, d);
    }

    // Bytes 0..11 of every lane of a, then of b, c and d. Bytes 12..15 must be 0.
    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_twelves(unsigned char* to, vec a, vec b, vec c, vec d)
    {
        vec const first{_mm_or_si128(a.v, _mm_slli_si128(b.v, 12))};
        vec const second{_mm_or_si128(_mm_srli_si128(b.v, 4), _mm_slli_si128(c.v, 8))};
        vec const third{_mm_or_si128(_mm_srli_si128(c.v, 8), _mm_slli_si128(d.v, 4))};
        store_triples<aligned, streaming>(to, first, second, third);
    }

    // As pack_u8, over the whole vectors: all of a, then all of b.
    QUILLO_INLINE friend vec pack_all_u8(vec a, vec b) { return pack_u8(a, b); }

    // Bytes 0..7 of each lane, one lane after the other.
    template <bool streaming>
    QUILLO_INLINE void store_low_halves(unsigned char* to) const
    {
        if constexpr (streaming) {
            long long const low = _mm_cvtsi128_si64(v);
            _mm_stream_si64(static_cast<long long*>(static_cast<void*>(to)), low);
        } else {
            _mm_storel_epi64(static_cast<__m128i*>(static_cast<void*>(to)), v);
        }
    }

    // The AND over all lanes.
    QUILLO_INLINE vec fold_and() const { return *this; }

    // Bit i: byte i is 255.
    QUILLO_INLINE int mask_of_255() const { return _mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(-1))); }
};

} // namespace Processing::FXlib::format_conversion::line

#if defined(__AVX2__)
#include "lib/format_conversion/line/vec_256.h"
#endif
#if defined(__AVX512BW__)
#include "lib/format_conversion/line/vec_512.h"
#endif

#undef QUILLO_LANEWISE
