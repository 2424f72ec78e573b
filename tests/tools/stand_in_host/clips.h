// Small clips made by ffmpeg, and what ffmpeg decodes from them again.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quillo::stand_in {

// Runs ffmpeg with the arguments; throws with its words where it fails.
void ffmpeg(std::string const& arguments);

// All frames of a clip, one after the other, in ffmpeg's own pixel format of that name.
std::vector<unsigned char> decoded(std::filesystem::path const& clip, std::string const& pixel_format);

// The first audio stream as interleaved floats.
std::vector<float> decoded_sound(std::filesystem::path const& clip);

} // namespace quillo::stand_in
