// The C edge: nothing is thrown past it.
#include "sender/Quillolib_send.h"

#include "sender/open/sender.h"

namespace {

// A call on a sender that can be used; what goes wrong on the way drops the frame.
template <class Call>
void with(SenderHandle handle, Call const& call) noexcept
{
    auto* const sender = static_cast<quillo::open::sender*>(handle);
    if (!sender || !sender->of_this_process())
        return;
    try {
        call(*sender);
    } catch (...) {
        // Out of memory, or of locks: the host goes on without this frame.
        return;
    }
}

} // namespace

SenderHandle Quillolib_send_create(SenderSettings const* settings)
{
    if (!settings)
        return nullptr;
    try {
        return new quillo::open::sender(*settings);
    } catch (...) {
        return nullptr;
    }
}

void Quillolib_send_destroy(SenderHandle handle)
{
    // A child process must leave it alone: the thread to be joined runs in the parent.
    with(handle, [](quillo::open::sender& sender) { delete &sender; });
}

void Quillolib_send_send_video(SenderHandle handle, SenderVideoFrame const* frame)
{
    with(handle, [=](quillo::open::sender& sender) { sender.send_video(frame, true); });
}

void Quillolib_send_send_video_async(SenderHandle handle, SenderVideoFrame const* frame)
{
    with(handle, [=](quillo::open::sender& sender) { sender.send_video(frame, false); });
}

void Quillolib_send_send_audio(SenderHandle handle, SenderAudioFrame const* frame)
{
    if (frame)
        with(handle, [=](quillo::open::sender& sender) { sender.send_audio(*frame); });
}
