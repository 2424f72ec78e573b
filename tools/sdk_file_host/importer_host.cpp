#include "tools/sdk_file_host/importer_host.h"

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_services.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/pixels.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/video.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace quillo::sdk_file {

namespace {

constexpr std::int64_t head_size = sizeof(SDK_FileHeader);
constexpr csSDK_int32 largest_side = 32768;

bool known_codec(csSDK_uint32 codec)
{
    return codec == SDK_CodecRAW || codec == SDK_Codec10yu || codec == SDK_CodecRLE;
}

// Where the frames end when they lie one after the other, end marks included.
std::int64_t frames_end(SDK_FileHeader const& header, std::int64_t frame_bytes)
{
    return head_size + header.frameCount * (frame_bytes + SDK_FrameEndSize);
}

std::int64_t bytes_of_frame(SDK_FileHeader const& header)
{
    return header.videoCodec == SDK_CodecRLE ? 0 : std::int64_t{header.width} * header.height * 4;
}

std::string video_problem(SDK_FileHeader const& header, std::int64_t file_size)
{
    if (!known_codec(header.videoCodec))
        return "its codec '" + codec_text(header.videoCodec) + "' is none of 'RAW ', '10yu', 'RLE_'";
    if (header.width <= 0 || header.height <= 0 || header.width > largest_side || header.height > largest_side)
        return "its picture size " + std::to_string(header.width) + " x " + std::to_string(header.height) +
               " is absurd (1 to " + std::to_string(largest_side) + " each way)";
    if (std::int64_t{header.width} * header.height > (1 << 28))
        return "its picture size " + std::to_string(header.width) + " x " + std::to_string(header.height) +
               " is more than 268 million pixels";
    if (header.frameCount < 0 || header.ticksPerFrame <= 0)
        return "its frame count " + std::to_string(header.frameCount) + " or frame duration " +
               std::to_string(header.ticksPerFrame) + " is not possible";
    if (frames_end(header, bytes_of_frame(header)) > file_size)
        return "it is cut short: " + std::to_string(header.frameCount) + " frames need " +
               std::to_string(frames_end(header, bytes_of_frame(header))) + " bytes, the file has " +
               std::to_string(file_size);
    return {};
}

std::string audio_problem(SDK_FileHeader const& header, std::int64_t file_size)
{
    int const channels = GetNumberOfAudioChannels(header.channelType);
    if (channels < 1)
        return "its audio channel type " + std::to_string(header.channelType) + " is none of 1, 2, 3";
    if (!std::isfinite(header.sampleRate) || header.sampleRate < 1 || header.sampleRate > 1e6)
        return "its audio sample rate is not possible";
    if (header.sampleCount < 0 || header.sampleCount > (file_size / 4) / channels)
        return "its " + std::to_string(header.sampleCount) + " audio samples do not fit into the file";
    std::int64_t const end = SDK_AudioStart(header) + header.sampleCount * channels * 4;
    if (header.sampleCount > 0 && header.videoCodec != SDK_CodecRLE && end > file_size)
        return "it is cut short: its sound ends at byte " + std::to_string(end) + ", the file at " +
               std::to_string(file_size);
    return {};
}

unsigned char eight_bits(float value)
{
    return static_cast<unsigned char>(std::clamp(value * 255.0f + 0.5f, 0.0f, 255.0f));
}

// BT.601, the matrix in which a '10yu' frame was written.
void bgra_from_vuya(float const* vuya, unsigned char* bgra)
{
    float const y = vuya[2], u = vuya[1], v = vuya[0];
    bgra[0] = eight_bits(y + 1.772f * u);
    bgra[1] = eight_bits(y - 0.344136f * u - 0.714136f * v);
    bgra[2] = eight_bits(y + 1.402f * v);
    bgra[3] = eight_bits(vuya[3]);
}

} // namespace

std::string codec_text(csSDK_uint32 codec)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        char const c = static_cast<char>(codec >> shift);
        text += c >= ' ' && c <= '~' ? c : '?';
    }
    return text;
}

std::string problem_of(SDK_FileHeader const& header, std::int64_t file_size)
{
    if (std::memcmp(header.signature, SDK_FileSignature, sizeof header.signature) != 0)
        return "it does not begin with \"PREMIERE SDK_FILE \"";
    if (header.version != SDK_FileVersion)
        return "its version is " + std::to_string(header.version) + ", not " + std::to_string(SDK_FileVersion);
    if ((header.hasVideo != 0 && header.hasVideo != 1) || (header.hasAudio != 0 && header.hasAudio != 1))
        return "its video and audio marks are neither 0 nor 1";
    if (!header.hasVideo && !header.hasAudio)
        return "it has neither video nor audio";
    if (header.hasVideo)
        if (std::string problem = video_problem(header, file_size); !problem.empty())
            return problem;
    return header.hasAudio ? audio_problem(header, file_size) : std::string();
}

importer_host::importer_host(int descriptor) : importer_{}
{
    struct stat info
    {
    };
    if (fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode))
        throw bad_file("it is not an ordinary file");
    importer_.file = file_of(descriptor);
    if (FSReadFork(descriptor, fsFromStart, 0, sizeof importer_.header, &importer_.header, nullptr))
        throw bad_file("it is shorter than the header of 602 bytes");
    if (std::string const problem = problem_of(importer_.header, info.st_size); !problem.empty())
        throw bad_file(problem);
}

int importer_host::channels() const { return header().hasAudio ? GetNumberOfAudioChannels(header().channelType) : 0; }

std::int64_t importer_host::frame_bytes() const { return bytes_of_frame(header()); }

std::vector<char> importer_host::frame(std::int64_t index) const
{
    if (!header().hasVideo || index < 0 || index >= header().frameCount)
        throw std::out_of_range("there is no frame " + std::to_string(index) + ", the file has " +
                                std::to_string(header().hasVideo ? header().frameCount : 0));
    std::vector<char> pixels(static_cast<std::size_t>(frame_bytes()));
    if (ReadSDK_File(importer_.file, static_cast<csSDK_int32>(frame_bytes()), static_cast<csSDK_int32>(index),
                     pixels.data()))
        throw bad_file("frame " + std::to_string(index) + " cannot be read");
    return pixels;
}

std::vector<unsigned char> importer_host::bgra(std::int64_t index) const
{
    if (header().videoCodec == SDK_CodecRLE)
        throw bad_file("frames of the codec 'RLE_' have no pixels");
    std::vector<char> stored = frame(index);
    std::size_t const width = static_cast<std::size_t>(header().width);
    std::size_t const height = static_cast<std::size_t>(header().height);
    std::vector<unsigned char> picture(width * height * 4);
    std::vector<csSDK_uint32> words(width);
    std::vector<float> vuya(width * 4);
    for (std::size_t row = 0; row < height; ++row) {
        // The lowest row of the picture stands first in the file.
        char const* const from = stored.data() + (height - 1 - row) * width * 4;
        unsigned char* const to = picture.data() + row * width * 4;
        std::memcpy(to, from, width * 4);
        if (header().videoCodec != SDK_Codec10yu)
            continue;
        std::memcpy(words.data(), from, width * 4);
        ConvertFromV410To32f(words.data(), vuya.data(), header().width, 1);
        for (std::size_t x = 0; x < width; ++x)
            bgra_from_vuya(&vuya[x * 4], to + x * 4);
    }
    return picture;
}

std::vector<std::vector<float>> importer_host::audio(PrAudioSample first, csSDK_uint32 count)
{
    PrAudioSample const total = header().hasAudio ? header().sampleCount : 0;
    std::vector<std::vector<float>> samples(static_cast<std::size_t>(channels()));
    if (first > total)
        return samples;
    imImportAudioRec7 request{};
    request.position = first;
    request.size = count;
    PrAudioSample start = 0, found = 0;
    calculateAudioRequest(&request, total, &importer_.position, &start, &found);
    std::vector<float*> buffers;
    for (auto& channel : samples) {
        channel.resize(static_cast<std::size_t>(found));
        buffers.push_back(channel.data());
    }
    setPointerToAudioStart(&importer_, start, importer_.file);
    if (readAudioToBuffer(found, total, channels(), importer_.file, buffers.data()))
        throw bad_file("its sound cannot be read");
    return samples;
}

} // namespace quillo::sdk_file
