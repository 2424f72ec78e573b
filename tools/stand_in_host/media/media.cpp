#include "tools/stand_in_host/media/media.h"
#include "tools/stand_in_host/media/audio_stream.h"
#include "tools/stand_in_host/media/input_error.h"
#include "tools/stand_in_host/media/video_stream.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace quillo::stand_in {

namespace {

std::string uri_of(std::string const& path_or_uri)
{
    if (path_or_uri.find("://") != std::string::npos)
        return path_or_uri;
    auto refuse = [&](char const* why) {
        throw input_error(input_error::reason::unreadable, "cannot read " + path_or_uri + ": " + why);
    };
    if (std::filesystem::is_directory(path_or_uri))
        refuse("it is a folder");
    if (!std::ifstream(path_or_uri))
        refuse(std::strerror(errno));
    GError* error = nullptr;
    string_ptr const uri(gst_filename_to_uri(path_or_uri.c_str(), &error));
    error_ptr const owned(error);
    if (!uri)
        refuse(error->message);
    return uri.get();
}

class media : public source
{
  public:
    media(std::string const& path_or_uri, bool with_audio) : name(path_or_uri)
    {
        std::string const uri = uri_of(path_or_uri);
        video_reader = std::make_unique<stream_reader>(uri, name, stream_reader::kind::video);
        if (!video_reader->exists())
            throw input_error(input_error::reason::no_video, "no video in " + name);
        pictures = std::make_unique<video_stream>(*video_reader);
        if (!with_audio || !video_reader->has_audio_too())
            return;
        audio_reader = std::make_unique<stream_reader>(uri, name, stream_reader::kind::audio);
        if (audio_reader->exists())
            sound = std::make_unique<audio_stream>(*audio_reader, pictures->origin());
    }

    std::string title() const override { return name; }
    video_description video() const override { return pictures->description(); }
    std::optional<std::int64_t> frame_count() const override { return pictures->frame_count(); }

    std::optional<audio_description> audio() const override
    {
        return sound ? std::optional(sound->description()) : std::nullopt;
    }

    bool draw(std::int64_t frame, picture_view const& target) override { return pictures->draw(frame, target); }

    void read_audio(std::int64_t first, int count, float* const* channels) override
    {
        if (sound)
            sound->read(first, count, channels);
    }

  private:
    std::string name;
    std::unique_ptr<stream_reader> video_reader;
    std::unique_ptr<stream_reader> audio_reader;
    std::unique_ptr<video_stream> pictures;
    std::unique_ptr<audio_stream> sound;
};

} // namespace

std::unique_ptr<source> open_media(std::string const& path_or_uri, bool with_audio)
{
    return std::make_unique<media>(path_or_uri, with_audio);
}

} // namespace quillo::stand_in
