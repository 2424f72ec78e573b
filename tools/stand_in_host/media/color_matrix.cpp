#include "tools/stand_in_host/media/color_matrix.h"

#include <algorithm>
#include <cmath>

namespace quillo::stand_in {

namespace {

struct affine
{
    double weight[3][3];
    double offset[3];
};

// target = second(first(source))
affine chain(affine const& second, affine const& first)
{
    affine result{};
    for (int row = 0; row < 3; ++row) {
        result.offset[row] = second.offset[row];
        for (int k = 0; k < 3; ++k) {
            result.offset[row] += second.weight[row][k] * first.offset[k];
            for (int column = 0; column < 3; ++column)
                result.weight[row][column] += second.weight[row][k] * first.weight[k][column];
        }
    }
    return result;
}

affine inverse(affine const& a)
{
    auto const& m = a.weight;
    auto cofactor = [&m](int r, int c) {
        int const r1 = (r + 1) % 3, r2 = (r + 2) % 3, c1 = (c + 1) % 3, c2 = (c + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    double const determinant = m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
    affine result{};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) {
            result.weight[row][column] = cofactor(column, row) / determinant;
            result.offset[row] -= result.weight[row][column] * a.offset[column];
        }
    return result;
}

// From R, G, B in 0..1 to the components' codes in 0..255.
affine encoder(color_encoding const& e)
{
    double const luma_span = e.full_range ? 255 : 219;
    double const chroma_span = e.full_range ? 255 : 224;
    double const black = e.full_range ? 0 : 16;
    if (e.rgb)
        return {{{luma_span, 0, 0}, {0, luma_span, 0}, {0, 0, luma_span}}, {black, black, black}};
    double const kg = 1 - e.kr - e.kb;
    double const cb = chroma_span / (2 * (1 - e.kb));
    double const cr = chroma_span / (2 * (1 - e.kr));
    return {{{luma_span * e.kr, luma_span * kg, luma_span * e.kb},
             {-cb * e.kr, -cb * kg, cb * (1 - e.kb)},
             {cr * (1 - e.kr), -cr * kg, -cr * e.kb}},
            {black, 128, 128}};
}

constexpr double scale = 65536;

} // namespace

color_matrix::color_matrix(color_encoding const& from, color_encoding const& to)
    : identity(from == to || (from.rgb && to.rgb && from.full_range == to.full_range))
{
    affine const whole = chain(encoder(to), inverse(encoder(from)));
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            weight[row][column] = static_cast<int>(std::lround(whole.weight[row][column] * scale));
        offset[row] = static_cast<int>(std::lround((whole.offset[row] + 0.5) * scale));
    }
}

void color_matrix::apply(component_lines const& from, component_targets const& to, int count) const
{
    unsigned char const* const a = from.c[0];
    unsigned char const* const b = from.c[1];
    unsigned char const* const c = from.c[2];
    for (int k = 0; k < 3; ++k) {
        unsigned char* const target = to.c[k];
        int const wa = weight[k][0], wb = weight[k][1], wc = weight[k][2], start = offset[k];
        for (int x = 0; x < count; ++x)
            target[x] =
                static_cast<unsigned char>(std::clamp((wa * a[x] + wb * b[x] + wc * c[x] + start) >> 16, 0, 255));
    }
}

} // namespace quillo::stand_in
