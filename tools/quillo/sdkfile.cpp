// quillo sdkfile: makes files of the host's uncompressed sample format, tells what is in them, and takes pictures and
// sound out of them.
#include "tools/quillo/command.h"
#include "tools/quillo/progress_bar.h"
#include "tools/sdk_file_host/importer_host.h"
#include "tools/sdk_file_host/media_export.h"
#include "tools/stand_in_host/media/input_error.h"
#include "tools/stand_in_host/media/media.h"

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_services.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/frame_rate.h"

#include <fcntl.h>
#include <gst/gst.h>
#include <png.h>
#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>
#include <optional>

namespace quillo {

namespace {

using namespace sdk_file;

struct failure : std::runtime_error
{
    failure(int code_, std::string const& text) : std::runtime_error(text), code(code_) {}
    int code;
};

class open_file
{
  public:
    open_file(std::string const& path, int flags) : descriptor_(open(path.c_str(), flags | O_CLOEXEC, 0666))
    {
        if (descriptor_ < 0)
            throw failure(flags == O_RDONLY ? exit_input : exit_failure,
                          "cannot open '" + path + "': " + std::strerror(errno));
    }
    ~open_file() { close(descriptor_); }
    open_file(open_file const&) = delete;
    open_file& operator=(open_file const&) = delete;
    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

std::map<std::string, csSDK_uint32> const codecs{{"raw", SDK_CodecRAW}, {"10yu", SDK_Codec10yu}, {"rle", SDK_CodecRLE}};

std::string result_text(csSDK_int32 result)
{
    switch (result) {
    case SDK_WroteTooLittle:
        return "fewer bytes were written than wanted";
    case dskFulErr:
        return "the disk is full";
    case ioErr:
        return "the file system reports an error";
    default:
        return "result " + std::to_string(result);
    }
}

void write_file(std::string const& from, std::string const& to, csSDK_uint32 codec, bool with_audio)
{
    gst_init(nullptr, nullptr);
    auto const clip = stand_in::open_media(from, with_audio);
    export_settings const settings = [&] {
        try {
            return settings_for(*clip, codec, with_audio);
        } catch (std::runtime_error const& error) {
            throw failure(exit_failure, "'" + from + "' cannot be exported: " + error.what());
        }
    }();
    open_file const file(to, O_WRONLY | O_CREAT | O_TRUNC);
    media_export source(*clip);
    exporter_host host(settings, source, file_of(file.descriptor()));
    progress_bar progress(host.frame_count());
    csSDK_int32 const result = host.run([&](csSDK_int64 frame) { progress.show(frame + 1); });
    progress.finish();
    if (result) {
        unlink(to.c_str());
        throw failure(exit_failure, "writing '" + to + "' failed: " + result_text(result));
    }
}

importer_host open_importer(open_file const& file, std::string const& path)
{
    try {
        return importer_host(file.descriptor());
    } catch (bad_file const& error) {
        throw failure(exit_input, "'" + path + "' is not a whole SDK_File: " + error.what());
    }
}

void tell(std::string const& path)
{
    open_file const file(path, O_RDONLY);
    importer_host const importer = open_importer(file, path);
    SDK_FileHeader const header = importer.header();
    std::cout << path << ": SDK_File, version " << header.version << '\n';
    if (header.hasVideo) {
        csSDK_int32 scale = 0, sample_size = 0;
        ConvertPrTimeToScaleSampleSize(&time_suite(), header.ticksPerFrame, &scale, &sample_size);
        static char const* const fields[] = {"progressive", "upper field first", "lower field first"};
        std::cout << "  video  '" << codec_text(header.videoCodec) << "' " << header.width << " x " << header.height
                  << ", " << header.frameCount << " frames of " << header.ticksPerFrame << " ticks";
        if (scale)
            std::cout << " (" << scale << '/' << sample_size << " a second)";
        std::cout << ", "
                  << (header.fieldType >= 0 && header.fieldType <= 2 ? fields[header.fieldType] : "unknown fields")
                  << ", pixel aspect " << header.aspectNumerator << ':' << header.aspectDenominator << ", bit depth "
                  << header.bitDepth << '\n';
        std::cout << "         frame i at byte 602 + i x " << importer.frame_bytes() + SDK_FrameEndSize << '\n';
    }
    if (header.hasAudio)
        std::cout << "  audio  " << importer.channels() << " channels, " << header.sampleRate << " Hz, "
                  << header.sampleCount << " samples each, from byte " << importer.audio_start() << '\n';
}

void write_png(importer_host const& importer, std::int64_t frame, std::string const& path)
{
    auto const picture = importer.bgra(frame);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(importer.header().width);
    image.height = static_cast<png_uint_32>(importer.header().height);
    image.format = PNG_FORMAT_BGRA;
    if (!png_image_write_to_file(&image, path.c_str(), 0, picture.data(), 0, nullptr))
        throw failure(exit_failure, "cannot write '" + path + "': " + image.message);
}

void write_wav(importer_host& importer, std::string const& path)
{
    int const channels = importer.channels();
    if (channels == 0)
        throw failure(exit_input, "the file has no sound");
    SF_INFO info{};
    info.samplerate = static_cast<int>(importer.header().sampleRate);
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> const wav(sf_open(path.c_str(), SFM_WRITE, &info), sf_close);
    if (!wav)
        throw failure(exit_failure, "cannot write '" + path + "': " + sf_strerror(nullptr));
    PrAudioSample const total = importer.header().sampleCount;
    progress_bar progress(total);
    std::vector<float> interleaved;
    for (PrAudioSample done = 0; done < total;) {
        auto const planar = importer.audio(done, 48000);
        std::size_t const count = planar[0].size();
        interleaved.resize(count * planar.size());
        for (std::size_t channel = 0; channel < planar.size(); ++channel)
            for (std::size_t i = 0; i < count; ++i)
                interleaved[i * planar.size() + channel] = planar[channel][i];
        if (sf_writef_float(wav.get(), interleaved.data(), static_cast<sf_count_t>(count)) !=
            static_cast<sf_count_t>(count))
            throw failure(exit_failure, "cannot write '" + path + "': " + sf_strerror(wav.get()));
        done += static_cast<PrAudioSample>(count);
        progress.show(done);
    }
    progress.finish();
}

void take_out(std::string const& path, std::optional<std::int64_t> frame, std::string const& png,
              std::string const& wav)
{
    open_file const file(path, O_RDONLY);
    importer_host importer = open_importer(file, path);
    try {
        if (!png.empty())
            write_png(importer, frame.value_or(0), png);
        if (!wav.empty())
            write_wav(importer, wav);
        if (png.empty() && wav.empty()) {
            // Everything once, to know that it can be read.
            std::int64_t const frames = importer.header().hasVideo ? importer.header().frameCount : 0;
            progress_bar progress(frames);
            for (std::int64_t i = frame.value_or(0); i < (frame ? *frame + 1 : frames); ++i) {
                (void)importer.frame(i);
                progress.show(i + 1);
            }
            progress.finish();
            std::cout << path << ": " << (frame ? 1 : frames) << " frames read\n";
        }
    } catch (std::out_of_range const& error) {
        throw failure(exit_input, "'" + path + "': " + error.what());
    } catch (bad_file const& error) {
        throw failure(exit_input, "'" + path + "': " + error.what());
    }
}

template <class Job>
int run(Job const& job)
{
    try {
        job();
        return exit_ok;
    } catch (failure const& error) {
        std::cerr << "quillo sdkfile: " << error.what() << '\n';
        return error.code;
    } catch (stand_in::input_error const& error) {
        std::cerr << "quillo sdkfile: " << error.what() << '\n';
        return error.why == stand_in::input_error::reason::no_video ? exit_no_video : exit_input;
    } catch (std::exception const& error) {
        std::cerr << "quillo sdkfile: " << error.what() << '\n';
        return exit_failure;
    }
}

struct sdkfile_options
{
    std::string in, out, png, wav, codec = "raw";
    std::int64_t frame = -1;
    bool audio = true;
};

} // namespace

void add_sdkfile(CLI::App& app, int& exit_code)
{
    auto const o = std::make_shared<sdkfile_options>();
    CLI::App* const all = app.add_subcommand("sdkfile", "Make, inspect and look into SDK_File media files");
    all->require_subcommand(1);

    CLI::App* const write = all->add_subcommand("write", "Export a media file as an SDK_File");
    write->add_option("IN", o->in, "Media file to export")->required();
    write->add_option("OUT", o->out, "File to write")->required();
    write->add_option("--codec", o->codec, "raw (8-bit BGRA), 10yu (10-bit 4:4:4), rle (no pixels)")
        ->check(CLI::IsMember({"raw", "10yu", "rle"}))
        ->capture_default_str();
    write->add_flag("!--no-audio", o->audio, "Leave the sound out");
    write->callback(
        [o, &exit_code] { exit_code = run([&] { write_file(o->in, o->out, codecs.at(o->codec), o->audio); }); });

    CLI::App* const read =
        all->add_subcommand("read", "Take a picture or the sound out of an SDK_File, or read it all");
    read->add_option("FILE", o->in, "SDK_File to read")->required();
    read->add_option("--frame", o->frame, "Frame, from 0")->check(CLI::NonNegativeNumber);
    read->add_option("--png", o->png, "Write the frame as a PNG picture");
    read->add_option("--wav", o->wav, "Write the sound as a WAV file of floats");
    read->callback([o, &exit_code] {
        exit_code =
            run([&] { take_out(o->in, o->frame < 0 ? std::nullopt : std::optional(o->frame), o->png, o->wav); });
    });

    CLI::App* const info = all->add_subcommand("info", "Tell what is in an SDK_File");
    info->add_option("FILE", o->in, "SDK_File to inspect")->required();
    info->callback([o, &exit_code] { exit_code = run([&] { tell(o->in); }); });
}

} // namespace quillo
