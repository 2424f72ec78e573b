#include "publisher/picture_copy.h"

#include <cstring>
#ifdef __SSSE3__
#include <tmmintrin.h>
#endif

namespace quillo::publisher {

namespace {

void drop_fourth_byte(unsigned char const* src, unsigned char* dst, std::size_t pixels)
{
    std::size_t k = 0;
#ifdef __SSSE3__
    // Sixteen pixels are four vectors in and three out.
    __m128i const low = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    auto const load = [&](std::size_t pixel) {
        return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<__m128i const*>(src + pixel * 4)), low);
    };
    for (; k + 16 <= pixels; k += 16) {
        __m128i const a = load(k), b = load(k + 4), c = load(k + 8), d = load(k + 12);
        auto* const out = reinterpret_cast<__m128i*>(dst + k * 3);
        _mm_storeu_si128(out, _mm_or_si128(a, _mm_slli_si128(b, 12)));
        _mm_storeu_si128(out + 1, _mm_or_si128(_mm_srli_si128(b, 4), _mm_slli_si128(c, 8)));
        _mm_storeu_si128(out + 2, _mm_or_si128(_mm_srli_si128(c, 8), _mm_slli_si128(d, 4)));
    }
#endif
    for (; k < pixels; ++k) {
        dst[k * 3] = src[k * 4];
        dst[k * 3 + 1] = src[k * 4 + 1];
        dst[k * 3 + 2] = src[k * 4 + 2];
    }
}

void take_fourth_byte(unsigned char const* src, unsigned char* dst, std::size_t pixels)
{
    std::size_t k = 0;
#ifdef __SSSE3__
    auto const load = [&](std::size_t pixel) {
        return _mm_srli_epi32(_mm_loadu_si128(reinterpret_cast<__m128i const*>(src + pixel * 4)), 24);
    };
    for (; k + 16 <= pixels; k += 16) {
        __m128i const low = _mm_packs_epi32(load(k), load(k + 4));
        __m128i const high = _mm_packs_epi32(load(k + 8), load(k + 12));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + k), _mm_packus_epi16(low, high));
    }
#endif
    for (; k < pixels; ++k)
        dst[k] = src[k * 4 + 3];
}

} // namespace

void copy_fill(sent_picture const& picture, picture_format const& format, unsigned char* dst, std::size_t dst_stride)
{
    auto const width = static_cast<std::size_t>(format.width);
    auto const height = static_cast<std::size_t>(format.height);
    auto const sent_width = static_cast<std::size_t>(picture.format.width);
    if (format.layout == fill::bgr) {
        for (std::size_t y = 0; y < height; ++y)
            drop_fourth_byte(picture.data + y * sent_width * 4, dst + y * dst_stride, width);
        return;
    }
    if (sent_width == width && dst_stride == width * 2) {
        std::memcpy(dst, picture.data, width * 2 * height);
        return;
    }
    for (std::size_t y = 0; y < height; ++y)
        std::memcpy(dst + y * dst_stride, picture.data + y * sent_width * 2, width * 2);
}

void copy_alpha(sent_picture const& picture, picture_format const& format, unsigned char* dst, std::size_t dst_stride)
{
    auto const width = static_cast<std::size_t>(format.width);
    auto const height = static_cast<std::size_t>(format.height);
    auto const sent_width = static_cast<std::size_t>(picture.format.width);
    if (format.layout == fill::bgr) {
        for (std::size_t y = 0; y < height; ++y)
            take_fourth_byte(picture.data + y * sent_width * 4, dst + y * dst_stride, width);
        return;
    }
    unsigned char const* const plane = picture.data + sent_width * height * 2;
    for (std::size_t y = 0; y < height; ++y)
        std::memcpy(dst + y * dst_stride, plane + y * sent_width, width);
}

void join_alpha(unsigned char const* bgr, unsigned char const* alpha, unsigned char* bgra, std::size_t pixels)
{
    std::size_t k = 0;
#ifdef __SSSE3__
    // Sixteen pixels are three vectors and one in, and four out.
    __m128i const apart = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    __m128i const fourth = _mm_setr_epi8(-1, -1, -1, 0, -1, -1, -1, 1, -1, -1, -1, 2, -1, -1, -1, 3);
    __m128i const next = _mm_set1_epi32(0x04000000);
    auto const load = [](unsigned char const* at) { return _mm_loadu_si128(reinterpret_cast<__m128i const*>(at)); };
    for (; k + 16 <= pixels; k += 16) {
        __m128i const a = load(bgr + k * 3), b = load(bgr + k * 3 + 16), c = load(bgr + k * 3 + 32);
        __m128i const colors[4] = {a, _mm_alignr_epi8(b, a, 12), _mm_alignr_epi8(c, b, 8), _mm_srli_si128(c, 4)};
        __m128i const alphas = load(alpha + k);
        __m128i place = fourth;
        for (std::size_t four = 0; four < 4; ++four) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(bgra + (k + four * 4) * 4),
                             _mm_or_si128(_mm_shuffle_epi8(colors[four], apart), _mm_shuffle_epi8(alphas, place)));
            place = _mm_add_epi8(place, next);
        }
    }
#endif
    for (; k < pixels; ++k) {
        std::memcpy(bgra + k * 4, bgr + k * 3, 3);
        bgra[k * 4 + 3] = alpha[k];
    }
}

} // namespace quillo::publisher
