// What a source sends, after checking: the shape of its pictures and of its sound.
#pragma once

#include "sender/open/protocol.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quillo::publisher {

struct rational
{
    int n = 0;
    int d = 1;
    bool operator==(rational const&) const = default;
};

// The fill of a picture, as it is kept and sent raw. "UYVA" is uyvy with a key, "BGRX" and "BGRA" are bgr. No source
// has bgra: it is fill and alpha in one, made for those who want them so.
enum class fill { uyvy, bgr, bgra };

struct picture_format
{
    int width = 1280;
    int height = 720;
    fill layout = fill::uyvy;
    rational rate{25, 1};
    rational pixel_aspect{1, 1};
    bool woven = false; // two fields, upper one first, in one frame
    bool operator==(picture_format const&) const = default;
};

struct sound_format
{
    int rate = 48000;
    int channels = 2;
    bool operator==(sound_format const&) const = default;
};

// Null for what cannot be a picture or sound within the protocol's limits.
std::optional<picture_format> checked(protocol::video_format_body const& body);
std::optional<sound_format> checked(protocol::audio_format_body const& body);

// The 8 by 8 "BGRX" frame with which a host says that it has no picture to show.
bool is_no_picture(protocol::video_format_body const& body);

bool has_alpha(protocol::video_format_body const& body);

// Bytes of a picture in a slot: its rows without gaps, and the alpha plane where there is one.
std::uint64_t slot_bytes(protocol::video_format_body const& body);

// Nearest fraction with a denominator of at most max_denominator.
rational nearest_fraction(double value, int max_denominator);

std::string fourcc_text(std::uint32_t fourcc);
std::string text(picture_format const& format);

} // namespace quillo::publisher
