#include "publisher/channel.h"

#include "publisher/slug.h"

#include <sys/socket.h>
#include <unistd.h>

namespace quillo::publisher {

namespace {

template <class Body>
Body required(std::span<std::byte const> bytes)
{
    auto const body = body_of<Body>(bytes);
    if (!body)
        throw protocol_error{"a message of the wrong size"};
    return *body;
}

void require(bool holds, char const* broken)
{
    if (!holds)
        throw protocol_error{broken};
}

} // namespace

std::string text(sender_id const& id)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string digits_of_id;
    for (auto const byte : id) {
        digits_of_id += digits[byte >> 4];
        digits_of_id += digits[byte & 15];
    }
    return digits_of_id;
}

bool channel::receive()
{
    bool const alive = stream_.receive();
    while (auto const message = stream_.next())
        handle(*message);
    require(!stream_.confused(), "what came is no message");
    return alive;
}

bool channel::give_slots_back()
{
    for (auto const& slot : returned_->take())
        if (!stream_.send(protocol::message::release, slot))
            return false;
    return true;
}

bool channel::send_wants(bool video, bool audio)
{
    return stream_.send(protocol::message::wants, protocol::wants_body{video, audio});
}

void channel::handle(message_stream::message const& message)
{
    if (message.type == protocol::message::status_request) {
        require(message.body.empty(), "a status request with a body");
        std::string const text = directory_.status();
        introduced_ = true;
        stream_.send_bytes(protocol::message::status, std::as_bytes(std::span{text}));
        return;
    }
    if (message.type == protocol::message::hello)
        return hello(message.body);
    require(events_ != nullptr, "no hello came first");

    switch (message.type) {
    case protocol::message::video_format: {
        auto const format = required<protocol::video_format_body>(message.body);
        require(checked(format).has_value(), "a video format out of range");
        return events_->video_format(format);
    }
    case protocol::message::audio_format: {
        auto const format = checked(required<protocol::audio_format_body>(message.body));
        require(format.has_value(), "an audio format out of range");
        return events_->audio_format(*format);
    }
    case protocol::message::pool:
        return pool(message.body);
    case protocol::message::video:
        return video(message.body);
    case protocol::message::audio:
        return audio(message.body);
    case protocol::message::losses:
        return events_->losses(required<protocol::losses_body>(message.body));
    default:
        throw protocol_error{"an unknown message"};
    }
}

void channel::hello(std::span<std::byte const> body)
{
    require(!introduced_, "a second hello");
    require(body.size() >= sizeof(protocol::hello_body), "a hello cut short");
    auto const head = required<protocol::hello_body>(body.first(sizeof(protocol::hello_body)));
    body = body.subspan(sizeof head);
    require(head.version == protocol::version, "another version of the protocol");
    require(head.name_size <= protocol::max_name, "a name too long");
    require(head.groups_size <= body.size() && head.name_size == body.size() - head.groups_size,
            "a hello of the wrong size");

    introduction who{{}, head.pid, {}};
    std::memcpy(who.id.data(), head.sender_id, who.id.size());
    who.name = clean_name({reinterpret_cast<char const*>(body.data()), head.name_size}, protocol::max_name);
    if (who.name.empty())
        who.name = "Quillo";
    events_ = directory_.open_source(who);
    require(events_ != nullptr, "too many sources");
    introduced_ = true;
    stream_.send(protocol::message::welcome,
                 protocol::welcome_body{protocol::version, static_cast<std::uint32_t>(::getpid())});
}

void channel::pool(std::span<std::byte const> body)
{
    auto const pool = required<protocol::pool_body>(body);
    try {
        memory_ = std::make_shared<slot_memory>(stream_.take_descriptor(), pool);
    } catch (std::runtime_error const& error) {
        throw protocol_error{error.what()};
    }
}

void channel::video(std::span<std::byte const> body)
{
    auto const message = required<protocol::video_body>(body);
    require(checked(message.format).has_value(), "a picture's format out of range");
    require(memory_ != nullptr, "a picture without slots to lie in");
    std::shared_ptr<void const> loan;
    // A picture of a pool that was replaced meanwhile is no mistake.
    if (message.pool_id == memory_->pool_id()) {
        auto const* const data = memory_->slot(message.slot, slot_bytes(message.format));
        require(data != nullptr, "a picture that does not lie within its slot");
        loan = memory_->lend(message.slot, returned_);
        events_->video({.picture = {message.format, data, loan},
                        .timecode_100ns = message.timecode_100ns,
                        .sent_ns = message.sent_ns,
                        .index = message.index,
                        .repeat = message.repeat != 0});
    }
    if (!loan)
        stream_.send(protocol::message::release, protocol::release_body{message.pool_id, message.slot});
    loan.reset();
    give_slots_back();
}

void channel::audio(std::span<std::byte const> body)
{
    require(body.size() >= sizeof(protocol::audio_body), "a block of sound cut short");
    auto const message = required<protocol::audio_body>(body.first(sizeof(protocol::audio_body)));
    auto const format = checked(message.format);
    require(format.has_value(), "a block's format out of range");
    require(message.samples >= 1 && message.samples <= protocol::max_block_samples, "a block's length out of range");
    auto const planar = body.subspan(sizeof message);
    std::size_t const bytes = message.silent ? 0
                                             : static_cast<std::size_t>(format->channels) *
                                                   static_cast<std::size_t>(message.samples) * sizeof(float);
    require(planar.size() == bytes, "a block of the wrong size");

    // The samples may lie at any address in what was received.
    std::vector<float> samples(bytes / sizeof(float));
    if (bytes > 0)
        std::memcpy(samples.data(), planar.data(), bytes);
    events_->audio({.format = *format,
                    .samples = message.samples,
                    .silent = message.silent != 0,
                    .planar = message.silent ? nullptr : samples.data(),
                    .timecode_100ns = message.timecode_100ns,
                    .sent_ns = message.sent_ns});
}

} // namespace quillo::publisher
