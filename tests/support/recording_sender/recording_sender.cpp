#include "tests/support/recording_sender/recording_sender.h"

#include <algorithm>

#include "tests/support/recording_sender/call_log.h"

namespace quillo::test {

namespace {

std::string four_characters(std::uint32_t code)
{
    std::string text;
    for (int shift = 0; shift < 32; shift += 8)
        text += static_cast<char>(code >> shift & 0xFF);
    return text;
}

std::size_t size_of(SenderVideoFrame const& frame)
{
    if (frame.height <= 0)
        return 0;
    auto const rows = static_cast<std::size_t>(frame.height);
    auto size = rows * static_cast<std::size_t>(frame.lineStride);
    if (frame.fourCC == SenderFourCC_UYVA)
        size += rows * static_cast<std::size_t>(frame.width);
    return size;
}

std::vector<float> samples_of(SenderAudioFrame const& frame)
{
    std::vector<float> samples;
    if (!frame.data)
        return samples;
    for (int channel = 0; channel < frame.channelCount; ++channel) {
        auto const* const first = reinterpret_cast<unsigned char const*>(frame.data) + channel * frame.channelStride;
        auto const* const plane = static_cast<float const*>(static_cast<void const*>(first));
        samples.insert(samples.end(), plane, plane + frame.sampleCount);
    }
    return samples;
}

} // namespace

recording_sender& recording_sender::instance()
{
    static recording_sender sender;
    return sender;
}

void recording_sender::reset()
{
    let_audio_run();
    std::lock_guard const lock(mutex);
    refuses = false;
    on_create = nullptr;
    on_audio = nullptr;
    sent_videos.clear();
    sent_audios.clear();
    held = nullptr;
    disturbed = 0;
    alive = 0;
}

void recording_sender::hold_audio_after(std::size_t sends)
{
    std::lock_guard const lock(mutex);
    holds_audio = true;
    audio_budget = sends;
}

void recording_sender::let_audio_run()
{
    std::lock_guard const lock(mutex);
    holds_audio = false;
    changed.notify_all();
}

std::vector<sent_video> recording_sender::videos() const
{
    std::lock_guard const lock(mutex);
    return sent_videos;
}

std::vector<sent_audio> recording_sender::audios() const
{
    std::lock_guard const lock(mutex);
    return sent_audios;
}

SenderHandle recording_sender::create(SenderSettings const& settings)
{
    call_log::instance().add("Quillolib_send_create(", settings.sourceName, ", ",
                             settings.groups ? settings.groups : "null", ", ", settings.clockVideo, ", ",
                             settings.clockAudio, ")");
    if (on_create)
        on_create();
    if (refuses)
        return nullptr;
    ++alive;
    return this;
}

void recording_sender::destroy(SenderHandle sender)
{
    call_log::instance().add("Quillolib_send_destroy(", sender == this ? "sender" : "?", ")");
    let_go();
    --alive;
}

// The frame sent before may be read until now.
void recording_sender::let_go()
{
    if (held && !std::equal(held_bytes.begin(), held_bytes.end(), held))
        ++disturbed;
    held = nullptr;
}

void recording_sender::video(SenderHandle sender, SenderVideoFrame const* frame, char const* function)
{
    char const* const who = sender == this ? "sender" : sender ? "?" : "null";
    let_go();
    if (!frame) {
        call_log::instance().add(function, "(", who, ", null)");
        return;
    }
    call_log::instance().add(function, "(", who, ", ", frame->width, "x", frame->height, " ",
                             four_characters(frame->fourCC), " ", frame->frameRateN, "/", frame->frameRateD, ")");
    held = frame->data;
    held_bytes.assign(frame->data, frame->data + size_of(*frame));
    if (!call_log::instance().is_quiet()) {
        std::lock_guard const lock(mutex);
        sent_videos.push_back({*frame, held_bytes});
    }
}

void recording_sender::audio(SenderHandle sender, SenderAudioFrame const& frame)
{
    auto& log = call_log::instance();
    if (on_audio)
        on_audio();
    if (log.is_quiet())
        return;
    log.add("Quillolib_send_send_audio(",
            sender == this ? "sender"
            : sender       ? "?"
                           : "null",
            ", ", frame.sampleRate, " Hz, ", frame.channelCount, " x ", frame.sampleCount, ", at ", frame.timecode,
            ", ", frame.data ? "samples" : "null", ", stride ", frame.channelStride, ")");
    std::unique_lock lock(mutex);
    sent_audios.push_back({frame, samples_of(frame)});
    changed.wait(lock, [&] { return !holds_audio || audio_budget > 0; });
    if (holds_audio)
        --audio_budget;
}

} // namespace quillo::test

using quillo::test::recording_sender;

SenderHandle Quillolib_send_create(SenderSettings const* settings)
{
    return recording_sender::instance().create(*settings);
}

void Quillolib_send_destroy(SenderHandle sender) { recording_sender::instance().destroy(sender); }

void Quillolib_send_send_video(SenderHandle sender, SenderVideoFrame const* frame)
{
    recording_sender::instance().video(sender, frame, "Quillolib_send_send_video");
}

void Quillolib_send_send_video_async(SenderHandle sender, SenderVideoFrame const* frame)
{
    recording_sender::instance().video(sender, frame, "Quillolib_send_send_video_async");
}

void Quillolib_send_send_audio(SenderHandle sender, SenderAudioFrame const* frame)
{
    recording_sender::instance().audio(sender, *frame);
}
