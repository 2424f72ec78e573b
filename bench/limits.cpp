#include "bench/limits.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include <immintrin.h>

namespace bench {

namespace {

constexpr std::size_t line = 64;

// step(from, lines to read, to, lines to write), both sides advancing in the proportion of their sizes, `unit` bytes a
// line.
template <std::size_t unit, class Step>
void in_step(unsigned char const* from, std::size_t in, unsigned char* to, std::size_t out, Step const& step)
{
    std::size_t const common = std::max<std::size_t>(1, std::gcd(in, out));
    std::size_t const reads = in / common, writes = out / common;
    std::size_t const steps = std::max(in, out) / (std::max(reads, writes) * unit);
    for (std::size_t n = 0; n < steps; ++n)
        step(from + n * reads * unit, reads, to + n * writes * unit, writes);
}

template <bool streaming>
void move(unsigned char const* from, std::size_t in, unsigned char* to, std::size_t out)
{
    __m256i sum = _mm256_setzero_si256();
    in_step<line>(
        from, in, to, out, [&](unsigned char const* r, std::size_t reads, unsigned char* w, std::size_t writes) {
            for (std::size_t i = 0; i < reads; ++i) {
                _mm_prefetch(reinterpret_cast<char const*>(r + i * line) + 4096, _MM_HINT_T0);
                auto const* const at = reinterpret_cast<__m256i_u const*>(r + i * line);
                sum = _mm256_xor_si256(sum, _mm256_xor_si256(_mm256_loadu_si256(at), _mm256_loadu_si256(at + 1)));
            }
            for (std::size_t i = 0; i < writes; ++i) {
                auto* const at = reinterpret_cast<__m256i_u*>(w + i * line);
                if constexpr (streaming) {
                    _mm256_stream_si256(static_cast<__m256i*>(static_cast<void*>(at)), sum);
                    _mm256_stream_si256(static_cast<__m256i*>(static_cast<void*>(at + 1)), sum);
                } else {
                    _mm256_storeu_si256(at, sum);
                    _mm256_storeu_si256(at + 1, sum);
                }
            }
        });
    // Keeps the reads where nothing is written.
    int const volatile used = _mm256_extract_epi32(sum, 0);
    static_cast<void>(used);
}

} // namespace

void copy_memory(unsigned char const* from, std::size_t in, unsigned char* to, std::size_t out)
{
    in_step<4096>(from, in, to, out,
                  [](unsigned char const* r, std::size_t reads, unsigned char* w, std::size_t writes) {
                      std::size_t const both = std::min(reads, writes) * 4096;
                      std::memcpy(w, r, both);
                      if (reads > writes)
                          move<false>(r + both, reads * 4096 - both, nullptr, 0);
                      if (writes > reads)
                          std::memset(w + both, 1, writes * 4096 - both);
                  });
}

void ordinary_stores(unsigned char const* from, std::size_t in, unsigned char* to, std::size_t out)
{
    move<false>(from, in, to, out);
}

void streaming_stores(unsigned char const* from, std::size_t in, unsigned char* to, std::size_t out)
{
    move<true>(from, in, to, out);
    _mm_sfence();
}

} // namespace bench
