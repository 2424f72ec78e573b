// Two lanes, for processors with AVX2. A part of vec.h.
#pragma once

namespace Processing::FXlib::format_conversion::line {

template <processor p>
struct vec<p, 2>
{
    static constexpr int lanes = 2;
    __m256i v;

    QUILLO_LANEWISE(_mm256, si256)

    QUILLO_INLINE static vec zero() { return {_mm256_setzero_si256()}; }
    QUILLO_INLINE static vec ones() { return {_mm256_set1_epi8(-1)}; }
    QUILLO_INLINE static vec of_eight(unsigned long long bytes)
    {
        return {_mm256_set1_epi64x(static_cast<long long>(bytes))};
    }

    template <class T>
    QUILLO_INLINE static vec repeat(lane<T> const& bytes)
    {
        return {_mm256_load_si256(static_cast<__m256i const*>(static_cast<void const*>(&bytes)))};
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

    template <bool aligned>
    QUILLO_INLINE static vec_pair<vec> load_two(unsigned char const* from)
    {
        return {load<aligned>(from), load<aligned>(from + 32)};
    }
    QUILLO_INLINE friend vec in_order(vec a) { return {_mm256_permute4x64_epi64(a.v, 0xD8)}; } // 0 2 1 3
    template <bool streaming>
    QUILLO_INLINE void store_low_halves_in_order(unsigned char* to) const
    {
        vec<p, 1>{_mm256_castsi256_si128(v)}.template store<false, streaming>(to);
    }

    QUILLO_INLINE static vec_pair<vec> load_twelves(unsigned char const* from)
    {
        using one = vec<p, 1>;
        return {join(one::template load<false>(from), one::template load<false>(from + 12)),
                join(one::template load<false>(from + 24), one::template load<false>(from + 36))};
    }

    QUILLO_INLINE friend vec dot_16(vec_pair<vec> a, vec weights)
    {
        return {_mm256_hadd_epi16(mul_add_u8(a.first, weights).v, mul_add_u8(a.second, weights).v)};
    }
    QUILLO_INLINE friend vec dot_u16(vec_pair<vec> a, vec weights) { return dot_16(a, weights); }
    QUILLO_INLINE friend vec dot_32(vec start, vec a, vec weights)
    {
        return {_mm256_add_epi32(start.v, _mm256_madd_epi16(mul_add_u8(a, weights).v, _mm256_set1_epi16(1)))};
    }
    QUILLO_INLINE friend vec or_masked(vec a, vec b, vec mask) { return a | (b & mask); }

    template <bool streaming>
    QUILLO_INLINE static void store_fourth_bytes(unsigned char* to, vec_pair<vec> a)
    {
        vec const k_A_reorder = repeat(fourth_bytes);
        vec const mixed = zip_low_32(shuffle(a.first, k_A_reorder), shuffle(a.second, k_A_reorder));
        __m256i const order = _mm256_setr_epi32(0, 4, 1, 5, 0, 4, 1, 5);
        vec<p, 1> const alphas{_mm256_castsi256_si128(_mm256_permutevar8x32_epi32(mixed.v, order))};
        alphas.template store<false, streaming>(to);
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

} // namespace Processing::FXlib::format_conversion::line
