// One connection from a sender or from a program that asks for the status: what it says, checked and handed on.
//
// The peer is this user's process but not trusted further: a message that breaks the rules ends the connection, with
// one line in the log, and nothing else.
#pragma once

#include "publisher/formats.h"
#include "publisher/message_stream.h"
#include "publisher/picture_copy.h"
#include "publisher/slot_memory.h"

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

namespace quillo::publisher {

using sender_id = std::array<std::uint8_t, 16>;

// As hexadecimal digits.
std::string text(sender_id const& id);

struct introduction
{
    sender_id id;
    std::uint32_t pid;
    std::string name; // clean, never empty
};

struct video_item
{
    sent_picture picture;
    std::int64_t timecode_100ns;
    std::int64_t sent_ns;
    std::uint64_t index;
    bool repeat; // the held picture for somebody who came late
};

struct audio_item
{
    sound_format format;
    int samples;
    bool silent;
    float const* planar; // channels x samples, null when silent; 4-byte aligned
    std::int64_t timecode_100ns;
    std::int64_t sent_ns;
};

// Who the connection speaks to. All calls come from the connection's thread.
class channel_events
{
  public:
    virtual ~channel_events() = default;
    virtual void video_format(protocol::video_format_body const& format) = 0; // checked
    virtual void audio_format(sound_format const& format) = 0;
    virtual void video(video_item const& item) = 0; // the picture is valid during the call, or while its loan is held
    virtual void audio(audio_item const& item) = 0;
    virtual void losses(protocol::losses_body const& losses) = 0;
};

// The rest of the publisher, as a new connection sees it.
class channel_directory
{
  public:
    virtual ~channel_directory() = default;
    // Null when no more sources are taken.
    virtual std::shared_ptr<channel_events> open_source(introduction const& who) = 0;
    virtual std::string status() = 0;
};

struct protocol_error : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

class channel
{
  public:
    // wake may come from any thread, when there are slots to give back.
    channel(open::descriptor connected, channel_directory& directory, std::function<void()> wake)
        : stream_(std::move(connected)), directory_(directory),
          returned_(std::make_shared<returned_slots>(std::move(wake)))
    {
    }

    int fd() const { return stream_.fd(); }
    bool wants_to_write() const { return stream_.has_unsent(); }
    bool introduced() const { return introduced_; }
    channel_events* events() const { return events_.get(); }

    // Takes in what has come and handles all whole messages. False: the peer is gone. Throws protocol_error.
    bool receive();
    bool flush() { return stream_.flush(); }

    // Tells the sender which slots it may fill again. False: the peer is gone.
    bool give_slots_back();

    // Says whether anybody watches. False: the peer is gone.
    bool send_wants(bool video, bool audio);

  private:
    void handle(message_stream::message const& message);
    void hello(std::span<std::byte const> body);
    void pool(std::span<std::byte const> body);
    void video(std::span<std::byte const> body);
    void audio(std::span<std::byte const> body);

    message_stream stream_;
    channel_directory& directory_;
    bool introduced_ = false;
    std::shared_ptr<channel_events> events_;
    std::shared_ptr<slot_memory> memory_; // null until there is some
    std::shared_ptr<returned_slots> const returned_;
};

} // namespace quillo::publisher
