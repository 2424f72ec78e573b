#include "publisher/formats.h"

#include "sender/Quillolib_send.h"

#include <cmath>
#include <cstdlib>
#include <numeric>

namespace quillo::publisher {

namespace {

constexpr int max_rate = 1000; // frames a second

bool is_422(std::uint32_t fourcc) { return fourcc == SenderFourCC_UYVY || fourcc == SenderFourCC_UYVA; }

rational reduced(int n, int d)
{
    int const divisor = std::gcd(n, d);
    return {n / divisor, d / divisor};
}

rational pixel_aspect(protocol::video_format_body const& body)
{
    double const ratio = static_cast<double>(body.aspect) * body.height / body.width;
    if (!(ratio >= 0.05 && ratio <= 20.0)) // a NaN ends here too
        return {1, 1};
    return nearest_fraction(ratio, 1000);
}

} // namespace

rational nearest_fraction(double value, int max_denominator)
{
    // Continued fraction; a 32-bit float has about seven digits, more would be noise.
    rational before{0, 1};
    rational best{1, 0};
    double rest = value;
    for (int step = 0; step < 32; ++step) {
        int const whole = static_cast<int>(rest);
        rational const next{whole * best.n + before.n, whole * best.d + before.d};
        if (next.d > max_denominator)
            break;
        before = best;
        best = next;
        if (std::abs(static_cast<double>(best.n) / best.d - value) < value * 1e-6)
            break;
        rest = 1.0 / (rest - whole);
    }
    return best.d && best.n ? best : rational{1, 1};
}

std::optional<picture_format> checked(protocol::video_format_body const& body)
{
    if (body.width < 1 || body.height < 1 || body.width > protocol::max_side || body.height > protocol::max_side)
        return std::nullopt;
    if (body.rate_n < 1 || body.rate_d < 1 || body.rate_n / body.rate_d > max_rate)
        return std::nullopt;
    bool const bgr = body.fourcc == SenderFourCC_BGRA || body.fourcc == SenderFourCC_BGRX;
    if (!bgr && !is_422(body.fourcc))
        return std::nullopt;
    if (body.frame_format != FrameFormat_interleaved && body.frame_format != FrameFormat_progressive)
        return std::nullopt;

    picture_format format;
    // Half a pair of 4:2:2 cannot be sent; the last column of an odd width goes.
    format.width = bgr ? body.width : body.width & ~1;
    if (format.width == 0)
        return std::nullopt;
    format.height = body.height;
    format.layout = bgr ? fill::bgr : fill::uyvy;
    format.rate = reduced(body.rate_n, body.rate_d);
    format.pixel_aspect = pixel_aspect(body);
    format.woven = body.frame_format == FrameFormat_interleaved;
    return format;
}

std::optional<sound_format> checked(protocol::audio_format_body const& body)
{
    if (body.rate < 1000 || body.rate > protocol::max_sample_rate)
        return std::nullopt;
    if (body.channels < 1 || body.channels > protocol::max_channels)
        return std::nullopt;
    return sound_format{body.rate, body.channels};
}

bool is_no_picture(protocol::video_format_body const& body)
{
    return body.width == 8 && body.height == 8 && body.fourcc == SenderFourCC_BGRX;
}

bool has_alpha(protocol::video_format_body const& body)
{
    return body.fourcc == SenderFourCC_UYVA || body.fourcc == SenderFourCC_BGRA;
}

std::uint64_t slot_bytes(protocol::video_format_body const& body)
{
    std::uint64_t const pixels = static_cast<std::uint64_t>(body.width) * static_cast<std::uint64_t>(body.height);
    switch (body.fourcc) {
    case SenderFourCC_UYVY:
        return pixels * 2;
    case SenderFourCC_UYVA:
        return pixels * 3;
    default:
        return pixels * 4;
    }
}

std::string fourcc_text(std::uint32_t fourcc)
{
    std::string result;
    for (int k = 0; k < 4; ++k, fourcc >>= 8) {
        char const c = static_cast<char>(fourcc & 0xFF);
        result += c >= ' ' && c <= '~' ? c : '?';
    }
    return result;
}

std::string text(picture_format const& format)
{
    return std::to_string(format.width) + "x" + std::to_string(format.height) + (format.woven ? " woven" : "") +
           (format.layout == fill::uyvy  ? " UYVY "
            : format.layout == fill::bgr ? " BGR "
                                         : " BGRA ") +
           std::to_string(format.rate.n) + "/" + std::to_string(format.rate.d);
}

} // namespace quillo::publisher
