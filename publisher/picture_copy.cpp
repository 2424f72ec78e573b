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

} // namespace quillo::publisher
