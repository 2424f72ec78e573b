#include "tests/tools/stand_in_host/clips.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace quillo::stand_in {

namespace {

std::vector<unsigned char> output_of(std::string const& command)
{
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        throw std::runtime_error("cannot run " + command);
    std::vector<unsigned char> result;
    unsigned char block[65536];
    while (std::size_t const got = std::fread(block, 1, sizeof block, pipe))
        result.insert(result.end(), block, block + got);
    if (pclose(pipe) != 0)
        throw std::runtime_error(command + ": " + std::string(result.begin(), result.end()));
    return result;
}

} // namespace

void ffmpeg(std::string const& arguments) { output_of("ffmpeg -nostdin -v error -y " + arguments + " 2>&1"); }

std::vector<unsigned char> decoded(std::filesystem::path const& clip, std::string const& pixel_format)
{
    return output_of("ffmpeg -nostdin -v error -noautorotate -i " + clip.string() +
                     " -map 0:v:0 -vsync passthrough -f rawvideo -pix_fmt " + pixel_format + " -");
}

std::vector<float> decoded_sound(std::filesystem::path const& clip)
{
    auto const bytes =
        output_of("ffmpeg -nostdin -v error -i " + clip.string() + " -map 0:a:0 -f f32le -c:a pcm_f32le -");
    std::vector<float> samples(bytes.size() / sizeof(float));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    return samples;
}

} // namespace quillo::stand_in
