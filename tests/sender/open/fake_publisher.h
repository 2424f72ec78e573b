// A publisher for tests: the other end of the local socket, inside the test's process. It records what it is told and
// misbehaves on demand.
#pragma once

#include "sender/open/descriptor.h"
#include "sender/open/protocol.h"
#include "sender/open/waker.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quillo::test {

class fake_publisher
{
  public:
    struct shown_picture
    {
        protocol::video_body head;
        std::vector<std::byte> bytes; // copied out of the slot
    };
    struct heard_sound
    {
        protocol::audio_body head;
        std::vector<float> samples;
    };
    struct record
    {
        int connections = 0;
        bool connected = false;
        std::vector<protocol::hello_body> hellos;
        std::string name;
        std::string groups;
        std::vector<protocol::video_format_body> video_formats;
        std::vector<protocol::audio_format_body> audio_formats;
        std::vector<protocol::pool_body> pools;
        std::vector<shown_picture> pictures;
        std::vector<heard_sound> sounds;
        std::optional<protocol::losses_body> losses;
        bool pools_sealed = true;
        std::vector<std::string> violations; // of the protocol, by the sender
    };
    struct behaviour
    {
        bool want_video = false;
        bool want_audio = false;
        bool give_back = true; // slots
        bool read = true;      // the socket
        bool remember = true;  // pictures and sound; else only the last of each
        bool greet = true;     // with a welcome
        std::uint32_t version = protocol::version;
        std::vector<std::byte> noise{}; // sent instead of a welcome
    };

    // Listens at the socket in the folder.
    explicit fake_publisher(std::string const& folder) : fake_publisher(folder, behaviour{}) {}
    fake_publisher(std::string const& folder, behaviour);
    ~fake_publisher();
    fake_publisher(fake_publisher const&) = delete;
    fake_publisher& operator=(fake_publisher const&) = delete;

    // Changes the behaviour; wants are told to the sender.
    void behave(std::function<void(behaviour&)> const& change);
    void send(protocol::message, std::vector<std::byte> const& body);
    void send_bytes(std::vector<std::byte> const&);
    void hang_up();

    // Waits until the record fulfils the condition; false after the time limit.
    bool wait_until(std::function<bool(record const&)> const&,
                    std::chrono::milliseconds limit = std::chrono::seconds{10});
    record seen() const;
    void forget_pictures();

  private:
    void run();
    void accept_one();
    void read_some();
    bool take_message();
    void take_body(protocol::message, std::byte const* body, std::size_t size);
    void take_picture(protocol::video_body const&);
    void take_pool(protocol::pool_body const&);
    void close_connection();
    void say(protocol::message, void const* body, std::size_t size);
    template <class Body>
    void say(protocol::message type, Body const& body)
    {
        say(type, &body, sizeof body);
    }
    void say_wants();

    open::descriptor listener;
    open::waker commands;

    mutable std::mutex lock;
    std::condition_variable changed;
    // guarded by lock
    record memory;
    behaviour manners;
    open::descriptor connection;
    bool stopping = false;

    // the thread's own
    std::vector<std::byte> arrived;
    std::vector<open::descriptor> passed;
    std::byte const* pool = nullptr;
    protocol::pool_body pool_is{};

    std::thread thread;
};

template <class Body>
std::vector<std::byte> bytes_of(Body const& body)
{
    auto const* const start = reinterpret_cast<std::byte const*>(&body);
    return {start, start + sizeof body};
}

} // namespace quillo::test
