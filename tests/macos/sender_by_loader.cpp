// The sender library's five functions, each led into the macOS library that the loader runs.
#include "sender/Quillolib_send.h"
#include "tests/support/macho/image.h"
#include "tests/support/macho/system.h"

#include <cstdio>
#include <cstdlib>

namespace {

template <class F>
F* in_library(char const* name)
{
    // Never unloaded: a sender destroyed in a hurry may leave a thread behind.
    static auto const* const library = [] {
        try {
            return new quillo::macho::image(QUILLO_MACOS_SENDER, quillo::macho::system_symbol);
        } catch (std::exception const& error) {
            std::fprintf(stderr, "%s\n", error.what());
            std::exit(1);
        }
    }();
    return reinterpret_cast<F*>(library->exported(name));
}

} // namespace

SenderHandle Quillolib_send_create(SenderSettings const* settings)
{
    return in_library<decltype(Quillolib_send_create)>("_Quillolib_send_create")(settings);
}

void Quillolib_send_destroy(SenderHandle sender)
{
    in_library<decltype(Quillolib_send_destroy)>("_Quillolib_send_destroy")(sender);
}

void Quillolib_send_send_video(SenderHandle sender, SenderVideoFrame const* frame)
{
    in_library<decltype(Quillolib_send_send_video)>("_Quillolib_send_send_video")(sender, frame);
}

void Quillolib_send_send_video_async(SenderHandle sender, SenderVideoFrame const* frame)
{
    in_library<decltype(Quillolib_send_send_video_async)>("_Quillolib_send_send_video_async")(sender, frame);
}

void Quillolib_send_send_audio(SenderHandle sender, SenderAudioFrame const* frame)
{
    in_library<decltype(Quillolib_send_send_audio)>("_Quillolib_send_send_audio")(sender, frame);
}
