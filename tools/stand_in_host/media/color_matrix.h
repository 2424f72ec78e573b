// Changes between colour encodings of 8-bit components, without change of primaries or transfer.
#pragma once

namespace quillo::stand_in {

// Components are Y, Cb, Cr or R, G, B, in this order.
struct color_encoding
{
    bool rgb;
    double kr; // luma weights of red and blue; without meaning for RGB
    double kb;
    bool full_range;

    friend bool operator==(color_encoding const&, color_encoding const&) = default;
};

constexpr color_encoding bt709_limited{false, 0.2126, 0.0722, false};
constexpr color_encoding bt601_limited{false, 0.299, 0.114, false};
constexpr color_encoding rgb_full{true, 0, 0, true};

// Three lines of samples, one a component.
struct component_lines
{
    unsigned char const* c[3];
};

struct component_targets
{
    unsigned char* c[3];
};

class color_matrix
{
  public:
    color_matrix(color_encoding const& from, color_encoding const& to);

    // True where apply would copy.
    bool is_identity() const { return identity; }

    // Results are rounded to nearest and limited to 0..255. Sources and targets must not overlap.
    void apply(component_lines const& from, component_targets const& to, int count) const;

  private:
    bool identity;
    int weight[3][3]; // [target][source], scale 2^16
    int offset[3];    // scale 2^16, half a level for rounding included
};

} // namespace quillo::stand_in
