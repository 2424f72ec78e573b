// Four lanes, for processors with AVX-512 BW, VL, VBMI and VNNI. A part of vec.h.
#pragma once

namespace Processing::FXlib::format_conversion::line {

// 3, 7, 11, ...
template <int n>
struct bytes_of_order
{
    unsigned char at[n];
};
template <int n>
constexpr bytes_of_order<n> every_fourth()
{
    bytes_of_order<n> order{};
    for (int i = 0; i < n; ++i)
        order.at[i] = static_cast<unsigned char>(4 * i + 3);
    return order;
}

template <processor p>
struct vec<p, 4>
{
    static constexpr int lanes = 4;
    __m512i v;

    QUILLO_LANEWISE(_mm512, si512)

    QUILLO_INLINE static vec zero() { return {_mm512_setzero_si512()}; }
    QUILLO_INLINE static vec ones() { return {_mm512_set1_epi8(-1)}; }
    QUILLO_INLINE static vec of_eight(unsigned long long bytes)
    {
        return {_mm512_set1_epi64(static_cast<long long>(bytes))};
    }

    template <class T>
    QUILLO_INLINE static vec repeat(lane<T> const& bytes)
    {
        return {_mm512_load_si512(&bytes)};
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

    template <bool aligned>
    QUILLO_INLINE static vec_pair<vec> load_two(unsigned char const* from)
    {
        return {load<aligned>(from), load<aligned>(from + 64)};
    }
    QUILLO_INLINE friend vec in_order(vec a)
    {
        return {_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), a.v)};
    }
    template <bool streaming>
    QUILLO_INLINE void store_low_halves_in_order(unsigned char* to) const
    {
        __m512i const low = _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 4, 1, 5, 0, 4, 1, 5), v);
        vec<p, 2>{_mm512_castsi512_si256(low)}.template store<false, streaming>(to);
    }

    QUILLO_INLINE static vec_pair<vec> load_twelves(unsigned char const* from)
    {
        __m512i const spread = _mm512_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5, 6, 7, 8, 8, 9, 10, 11, 11);
        return {{_mm512_permutexvar_epi32(spread, _mm512_loadu_si512(from))},
                {_mm512_permutexvar_epi32(spread, _mm512_loadu_si512(from + 48))}};
    }

    QUILLO_INLINE friend vec dot_16(vec_pair<vec> a, vec weights)
    {
        return {_mm512_packs_epi32(dot_32(zero(), a.first, weights).v, dot_32(zero(), a.second, weights).v)};
    }
    QUILLO_INLINE friend vec dot_u16(vec_pair<vec> a, vec weights)
    {
        return {_mm512_packus_epi32(dot_32(zero(), a.first, weights).v, dot_32(zero(), a.second, weights).v)};
    }
    QUILLO_INLINE friend vec dot_32(vec start, vec a, vec weights)
    {
        return {_mm512_dpbusd_epi32(start.v, a.v, weights.v)};
    }
    QUILLO_INLINE friend vec or_masked(vec a, vec b, vec mask)
    {
        return {_mm512_ternarylogic_epi32(a.v, b.v, mask.v, 0xF8)};
    }

    template <bool streaming>
    QUILLO_INLINE static void store_fourth_bytes(unsigned char* to, vec_pair<vec> a)
    {
        alignas(64) static constexpr auto order = every_fourth<64>();
        __m512i const alphas = _mm512_permutex2var_epi8(a.first.v, _mm512_load_si512(&order), a.second.v);
        vec<p, 2>{_mm512_castsi512_si256(alphas)}.template store<false, streaming>(to);
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

} // namespace Processing::FXlib::format_conversion::line
