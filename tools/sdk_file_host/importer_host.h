// An importer's host in small: it opens an SDK_File, checks what its header claims against the file's size, and reads
// frames and sound through the reading functions of the format.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/audio.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillo::sdk_file {

// A file that is not a whole SDK_File; the message says why, in one line.
struct bad_file : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// Empty when the header can be believed for a file of so many bytes, else what is wrong with it.
std::string problem_of(SDK_FileHeader const& header, std::int64_t file_size);

class importer_host
{
  public:
    // Reads and checks the header. The descriptor stays the caller's. Throws bad_file.
    explicit importer_host(int descriptor);

    SDK_FileHeader const& header() const { return importer_.header; }
    int channels() const;
    std::int64_t frame_bytes() const; // on disk, without the end mark
    std::int64_t audio_start() const { return SDK_AudioStart(importer_.header); }

    // The bytes of a frame as they stand in the file. Throws bad_file, std::out_of_range for an index that is none.
    std::vector<char> frame(std::int64_t index) const;

    // A frame as 8-bit BGRA, top row first, width x height. Throws bad_file for the codec 'RLE_', which has no pixels.
    std::vector<unsigned char> bgra(std::int64_t index) const;

    // Samples from first on, as many as there are up to count, one vector a channel. Throws bad_file.
    std::vector<std::vector<float>> audio(PrAudioSample first, csSDK_uint32 count);

  private:
    SDK_ImporterRec importer_;
};

// "RAW ", "10yu" or "RLE_", the codec's characters.
std::string codec_text(csSDK_uint32 codec);

} // namespace quillo::sdk_file
