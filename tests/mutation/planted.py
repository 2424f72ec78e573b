"""Faults planted on purpose. Each place must be there exactly once, so that a rewritten kernel asks for a new one."""

BODIES = "lib/format_conversion/line/bodies/"
TAIL_OF_444 = "    for (; i < count; i += 2)\n        reorder_pair<order>(src + i * 4, dst + i * 2);\n"

FAULTS = [
    {
        "name": "rounding",
        "file": BODIES + "rgb_to_uyvy.cpp",
        "old": "dst[1] = static_cast<unsigned char>((weighted_sum<p, order>(weights.y, src) + black_y) >> 7);",
        "new": "dst[1] = static_cast<unsigned char>((weighted_sum<p, order>(weights.y, src) + black_y + 64) >> 7);",
    },
    {
        "name": "swapped chroma",
        "file": BODIES + "ycbcr444_to_uyvy.cpp",
        "old": "    Cb,\n    Y<order>,\n    Cr<order>,\n    4 + Y<order>, //",
        "new": "    Cr<order>,\n    Y<order>,\n    Cb,\n    4 + Y<order>, //",
    },
    {
        "name": "lines of bgr joined at 3 x width",
        "file": "lib/format_conversion/uyvy_to_rgb.cpp",
        "old": "plane{dst, dst_stride, width * 4ll, whole_pairs(width) / 2 * 3}",
        "new": "plane{dst, dst_stride, width * 3ll, whole_pairs(width) / 2 * 3}",
    },
    {
        "name": "over-read by 16",
        "file": BODIES + "ycbcr444_to_uyvy.cpp",
        "old": TAIL_OF_444,
        "new": "    if (count > 0)\n        (void)*static_cast<unsigned char const volatile*>(src + (count + 1) / 2 * 8 + 15);\n" + TAIL_OF_444,
    },
    {
        "name": "missing tail",
        "file": BODIES + "uyvy_luma.cpp",
        "old": "    for (; i < count; ++i) {\n        int const y = src[i * 2 + 1];",
        "new": "    for (; i + 1 < count; ++i) {\n        int const y = src[i * 2 + 1];",
    },
    {
        "name": "half a vector streamed to the wrong place",
        "file": "lib/format_conversion/line/vec_256.h",
        "old": "_mm_stream_si128(half + 1, _mm256_extracti128_si256(v, 1));",
        "new": "_mm_stream_si128(half, _mm256_extracti128_si256(v, 1));",
    },
    {
        "name": "streamed where nothing is aligned",
        "file": "lib/format_conversion/detail/picture_walk.h",
        "old": "static_cast<std::uintptr_t>(stride)) & 15) == 0;",
        "new": "static_cast<std::uintptr_t>(stride)) & 7) == 0;",
    },
    {
        "name": "lines reversed that reach into each other",
        "file": "lib/format_conversion/detail/picture_walk.h",
        "old": "return !is_target || reach <= (stride < 0 ? -static_cast<long long>(stride) : stride);",
        "new": "return !is_target || tight <= (stride < 0 ? -static_cast<long long>(stride) : stride);",
    },
]
