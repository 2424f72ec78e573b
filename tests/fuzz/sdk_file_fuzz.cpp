// Anything at all as an SDK_File: what `quillo sdkfile info` and `read` do with it.
#include "tools/sdk_file_host/importer_host.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static int const file = memfd_create("sdk_file", 0);
    if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size))
        std::abort();
    try {
        quillo::sdk_file::importer_host importer(file);
        auto const& header = importer.header();
        if (header.hasVideo)
            for (std::int64_t frame : {std::int64_t{0}, std::int64_t{1}, std::int64_t{header.frameCount} - 1})
                if (frame >= 0 && frame < header.frameCount)
                    (void)importer.bgra(frame);
        if (header.hasAudio) {
            (void)importer.audio(0, 1000);
            (void)importer.audio(std::max<PrAudioSample>(header.sampleCount - 10, 0), 1000);
            (void)importer.audio(-1, 5);
        }
    } catch (quillo::sdk_file::bad_file const&) {
    }
    return 0;
}
