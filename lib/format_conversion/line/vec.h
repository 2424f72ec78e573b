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

// Sixteen bytes of constants, a shorter pattern repeated until it fills them: lane<short> weights{16, 128}.
template <class T>
struct alignas(16) lane
{
    T value[16 / sizeof(T)];

    template <class... Ts>
    constexpr lane(Ts... pattern) : value{}
    {
        T const given[] = {static_cast<T>(pattern)...};
        for (std::size_t i = 0; i < 16 / sizeof(T); ++i)
            value[i] = given[i % sizeof...(pattern)];
    }
};

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

    QUILLO_INLINE static vec of_bytes(unsigned char value) { return {_mm_set1_epi8(static_cast<char>(value))}; }

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

#if defined(__AVX2__)
template <processor p>
struct vec<p, 2>
{
    static constexpr int lanes = 2;
    __m256i v;

    QUILLO_LANEWISE(_mm256, si256)

    QUILLO_INLINE static vec zero() { return {_mm256_setzero_si256()}; }
    QUILLO_INLINE static vec ones() { return {_mm256_set1_epi8(-1)}; }
    QUILLO_INLINE static vec of_bytes(unsigned char value) { return {_mm256_set1_epi8(static_cast<char>(value))}; }

    template <class T>
    QUILLO_INLINE static vec repeat(lane<T> const& bytes)
    {
        return {_mm256_broadcastsi128_si256(vec<p, 1>::repeat(bytes).v)};
    }

    template <bool aligned>
    QUILLO_INLINE static vec load(void const* from)
    {
        return {_mm256_loadu_si256(static_cast<__m256i const*>(from))};
    }

    template <bool aligned>
    QUILLO_INLINE static vec_pair<vec> load_pairs(unsigned char const* from)
    {
        using one = vec<p, 1>;
        return {join(one::template load<aligned>(from), one::template load<aligned>(from + 32)),
                join(one::template load<aligned>(from + 16), one::template load<aligned>(from + 48))};
    }

    template <bool aligned, bool streaming>
    QUILLO_INLINE void store(void* to) const
    {
        auto* const at = static_cast<__m256i*>(to);
        if constexpr (streaming) {
            if (is_multiple<p>(to, 32)) {
                _mm256_stream_si256(at, v);
            } else {
                auto* const half = static_cast<__m128i*>(to);
                _mm_stream_si128(half, _mm256_castsi256_si128(v));
                _mm_stream_si128(half + 1, _mm256_extracti128_si256(v, 1));
            }
        } else {
            _mm256_storeu_si256(at, v);
        }
    }

    QUILLO_INLINE static vec load_low_halves(unsigned char const* from)
    {
        __m256i const halves = _mm256_castsi128_si256(vec<p, 1>::template load<false>(from).v);
        return {_mm256_permute4x64_epi64(halves, 0x10)}; // 0 . 1 .
    }

    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_pairs(unsigned char* to, vec a, vec b)
    {
        choose<0, 2>(a, b).template store<aligned, streaming>(to);
        choose<1, 3>(a, b).template store<aligned, streaming>(to + 32);
    }
    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_triples(unsigned char* to, vec a, vec b, vec c)
    {
        choose<0, 2>(a, b).template store<aligned, streaming>(to);
        choose<0, 3>(c, a).template store<aligned, streaming>(to + 32);
        choose<1, 3>(b, c).template store<aligned, streaming>(to + 64);
    }
    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_quads(unsigned char* to, vec a, vec b, vec c, vec d)
    {
        choose<0, 2>(a, b).template store<aligned, streaming>(to);
        choose<0, 2>(c, d).template store<aligned, streaming>(to + 32);
        choose<1, 3>(a, b).template store<aligned, streaming>(to + 64);
        choose<1, 3>(c, d).template store<aligned, streaming>(to + 96);
    }

    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_twelves(unsigned char* to, vec a, vec b, vec c, vec d)
    {
        // Six words a vector: each is turned so that it continues where the one before it ends.
        vec const a_0{_mm256_permutevar8x32_epi32(a.v, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 6, 6))};
        vec const b_6{_mm256_permutevar8x32_epi32(b.v, _mm256_setr_epi32(2, 4, 5, 6, 6, 6, 0, 1))};
        vec const c_4{_mm256_permutevar8x32_epi32(c.v, _mm256_setr_epi32(5, 6, 6, 6, 0, 1, 2, 4))};
        vec const d_2{_mm256_permutevar8x32_epi32(d.v, _mm256_setr_epi32(0, 0, 0, 1, 2, 4, 5, 6))};
        vec{_mm256_blend_epi32(a_0.v, b_6.v, 0xC0)}.store<aligned, streaming>(to);
        vec{_mm256_blend_epi32(b_6.v, c_4.v, 0xF0)}.store<aligned, streaming>(to + 32);
        vec{_mm256_blend_epi32(c_4.v, d_2.v, 0xFC)}.store<aligned, streaming>(to + 64);
    }

    QUILLO_INLINE friend vec pack_all_u8(vec a, vec b)
    {
        return {_mm256_permute4x64_epi64(pack_u8(a, b).v, 0xD8)}; // 0 2 1 3
    }

    template <bool streaming>
    QUILLO_INLINE void store_low_halves(unsigned char* to) const
    {
        vec<p, 1> const low{_mm256_castsi256_si128(_mm256_permute4x64_epi64(v, 0x08))}; // 0 2 . .
        low.template store<false, streaming>(to);
    }

    QUILLO_INLINE vec<p, 1> fold_and() const
    {
        return {_mm_and_si128(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1))};
    }

    QUILLO_INLINE static vec join(vec<p, 1> low, vec<p, 1> high)
    {
        return {_mm256_inserti128_si256(_mm256_castsi128_si256(low.v), high.v, 1)};
    }

    // Lanes 0 and 1 are a's, 2 and 3 b's.
    template <int low, int high>
    QUILLO_INLINE static vec choose(vec a, vec b)
    {
        return {_mm256_permute2x128_si256(a.v, b.v, high << 4 | low)};
    }
};
#endif

#if defined(__AVX512BW__)
template <processor p>
struct vec<p, 4>
{
    static constexpr int lanes = 4;
    __m512i v;

    QUILLO_LANEWISE(_mm512, si512)

    QUILLO_INLINE static vec zero() { return {_mm512_setzero_si512()}; }
    QUILLO_INLINE static vec ones() { return {_mm512_set1_epi8(-1)}; }
    QUILLO_INLINE static vec of_bytes(unsigned char value) { return {_mm512_set1_epi8(static_cast<char>(value))}; }

    template <class T>
    QUILLO_INLINE static vec repeat(lane<T> const& bytes)
    {
        return {_mm512_broadcast_i32x4(vec<p, 1>::repeat(bytes).v)};
    }

    template <bool aligned>
    QUILLO_INLINE static vec load(void const* from)
    {
        return {_mm512_loadu_si512(from)};
    }

    template <bool aligned>
    QUILLO_INLINE static vec_pair<vec> load_pairs(unsigned char const* from)
    {
        __m512i const a = _mm512_loadu_si512(from), b = _mm512_loadu_si512(from + 64);
        return {{_mm512_permutex2var_epi64(a, _mm512_setr_epi64(0, 1, 4, 5, 8, 9, 12, 13), b)},
                {_mm512_permutex2var_epi64(a, _mm512_setr_epi64(2, 3, 6, 7, 10, 11, 14, 15), b)}};
    }

    template <bool aligned, bool streaming>
    QUILLO_INLINE void store(void* to) const
    {
        if constexpr (streaming) {
            if (is_multiple<p>(to, 64)) {
                _mm512_stream_si512(static_cast<__m512i*>(to), v);
            } else {
                vec<p, 2> const low{_mm512_castsi512_si256(v)}, high{_mm512_extracti64x4_epi64(v, 1)};
                low.template store<false, true>(to);
                high.template store<false, true>(static_cast<unsigned char*>(to) + 32);
            }
        } else {
            _mm512_storeu_si512(to, v);
        }
    }

    QUILLO_INLINE static vec load_low_halves(unsigned char const* from)
    {
        __m512i const halves = _mm512_castsi256_si512(vec<p, 2>::template load<false>(from).v);
        return {_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 0, 1, 0, 2, 0, 3, 0), halves)};
    }

    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_pairs(unsigned char* to, vec a, vec b)
    {
        choose<0, 4, 1, 5>(a, b).template store<aligned, streaming>(to);
        choose<2, 6, 3, 7>(a, b).template store<aligned, streaming>(to + 64);
    }
    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_triples(unsigned char* to, vec a, vec b, vec c)
    {
        vec const c_a = choose<0, 5, 2, 7>(c, a);   // c0 a1 c2 a3
        vec const b_c_b = choose<1, 5, 2, 2>(b, c); // b1 c1 b2 .
        choose<0, 1, 4, 5>(choose<0, 4, 0, 0>(a, b), c_a).template store<aligned, streaming>(to);
        choose<0, 1, 6, 2>(b_c_b, a).template store<aligned, streaming>(to + 64);
        choose<2, 3, 4, 5>(c_a, choose<3, 7, 3, 3>(b, c)).template store<aligned, streaming>(to + 128);
    }
    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_quads(unsigned char* to, vec a, vec b, vec c, vec d)
    {
        vec const ab_01 = choose<0, 4, 1, 5>(a, b), ab_23 = choose<2, 6, 3, 7>(a, b);
        vec const cd_01 = choose<0, 4, 1, 5>(c, d), cd_23 = choose<2, 6, 3, 7>(c, d);
        choose<0, 1, 4, 5>(ab_01, cd_01).template store<aligned, streaming>(to);
        choose<2, 3, 6, 7>(ab_01, cd_01).template store<aligned, streaming>(to + 64);
        choose<0, 1, 4, 5>(ab_23, cd_23).template store<aligned, streaming>(to + 128);
        choose<2, 3, 6, 7>(ab_23, cd_23).template store<aligned, streaming>(to + 192);
    }

    template <bool aligned, bool streaming>
    QUILLO_INLINE static void store_twelves(unsigned char* to, vec a, vec b, vec c, vec d)
    {
        __m512i const first = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 16, 17, 18, 20);
        __m512i const second = _mm512_setr_epi32(5, 6, 8, 9, 10, 12, 13, 14, 16, 17, 18, 20, 21, 22, 24, 25);
        __m512i const third = _mm512_setr_epi32(10, 12, 13, 14, 16, 17, 18, 20, 21, 22, 24, 25, 26, 28, 29, 30);
        vec{_mm512_permutex2var_epi32(a.v, first, b.v)}.store<aligned, streaming>(to);
        vec{_mm512_permutex2var_epi32(b.v, second, c.v)}.store<aligned, streaming>(to + 64);
        vec{_mm512_permutex2var_epi32(c.v, third, d.v)}.store<aligned, streaming>(to + 128);
    }

    QUILLO_INLINE friend vec pack_all_u8(vec a, vec b)
    {
        return {_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), pack_u8(a, b).v)};
    }

    template <bool streaming>
    QUILLO_INLINE void store_low_halves(unsigned char* to) const
    {
        __m512i const low = _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 0, 2, 4, 6), v);
        vec<p, 2>{_mm512_castsi512_si256(low)}.template store<false, streaming>(to);
    }

    QUILLO_INLINE vec<p, 1> fold_and() const
    {
        return vec<p, 2>{_mm256_and_si256(_mm512_castsi512_si256(v), _mm512_extracti64x4_epi64(v, 1))}.fold_and();
    }

    // Lanes 0..3 are a's, 4..7 b's.
    template <int l0, int l1, int l2, int l3>
    QUILLO_INLINE static vec choose(vec a, vec b)
    {
        __m512i const halves = _mm512_setr_epi64(l0 * 2, l0 * 2 + 1, l1 * 2, l1 * 2 + 1, //
                                                 l2 * 2, l2 * 2 + 1, l3 * 2, l3 * 2 + 1);
        return {_mm512_permutex2var_epi64(a.v, halves, b.v)};
    }
};
#endif

#undef QUILLO_LANEWISE

template <processor p>
constexpr int lanes_of = p == processor::avx512 ? 4
                         : p == processor::avx2 ? 2
                                                : 1;

template <processor p>
using widest_vec = vec<p, lanes_of<p>>;

// Fetches the cache lines of so many bytes. Pays with several sources or targets and before streamed stores; between
// one source and one target of ordinary stores the processor reads ahead better by itself.
template <processor p, int bytes>
QUILLO_INLINE inline void prefetch(void const* at)
{
    for (int line = 0; line < bytes; line += 64)
        _mm_prefetch(static_cast<char const*>(at) + line, _MM_HINT_T0);
}

QUILLO_INLINE inline void move_string(unsigned char const* from, unsigned char* to, std::ptrdiff_t bytes)
{
#if defined(__x86_64__)
    asm volatile("rep movsb" : "+S"(from), "+D"(to), "+c"(bytes) : : "memory");
#else
    __builtin_memcpy(to, from, bytes);
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
    if constexpr (lanes_of < p >> 1)
        for (; i + pixels <= count; i += pixels)
            body.template operator()<vec<p, 1>, streaming>(i);
    return i;
}

template <processor p, int pixels, class Body>
QUILLO_INLINE inline std::ptrdiff_t blocks(std::ptrdiff_t count, access how, Body const& body)
{
    detail::note_ran(p);
    return how.streaming ? blocks_stored<p, pixels, true>(count, body) : blocks_stored<p, pixels, false>(count, body);
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

  private:
    widest_vec<p> wide_ = widest_vec<p>::ones();
    vec<p, 1> narrow_ = vec<p, 1>::ones();
};

} // namespace Processing::FXlib::format_conversion::line
