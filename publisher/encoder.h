// Which H.264 encoder this machine has, and how it is set for live pictures.
#pragma once

#include "publisher/formats.h"

#include <optional>
#include <string>

namespace quillo::publisher {

struct encoder_choice
{
    std::string element;
    bool hardware;
    std::string input; // caps of the pictures it takes
};

// Tries the encoders in order of preference (hardware, openh264, x264 where it is installed) with real pictures; or
// only the one named. Takes some 50 ms. Nothing when none works.
std::optional<encoder_choice> choose_encoder(std::string const& only = {});

// Whether sound can be encoded with Opus.
bool have_opus();

// The size that pictures of this format are encoded at: even, and at most about 1080p unless hardware does the work.
struct encoded_size
{
    int width;
    int height;
    bool operator==(encoded_size const&) const = default;
};
encoded_size size_to_encode(picture_format const& format, bool hardware);

// Bits a second for this size and rate.
int bit_rate(encoded_size size, rational rate);

// Elements from appsrc "in" to appsink "out" that encode pictures of the format. Each access unit comes out whole, key
// frames with their parameter sets.
std::string encoding_pipeline(encoder_choice const& choice, picture_format const& format);

// Likewise for stereo float sound of this rate, to Opus packets of 10 ms.
std::string opus_pipeline(int rate);

} // namespace quillo::publisher
