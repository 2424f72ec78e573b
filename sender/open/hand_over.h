// The one thread of a sender: copies pictures into the pool, unless the host's thread comes first, and says everything
// that there is to say to the publisher.
#pragma once

#include "sender/open/channel.h"
#include "sender/open/log.h"
#include "sender/open/mailbox.h"
#include "sender/open/publisher_starter.h"
#include "sender/open/slot_pool.h"
#include "sender/open/waker.h"

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quillo::open {

// What stays the same for a sender's life.
struct source_identity
{
    std::string name;   // UTF-8
    std::string groups; // may be empty
    std::array<std::uint8_t, 16> id;
};

class hand_over
{
  public:
    hand_over(source_identity, std::string runtime_folder, start_environment);

    // For the host's threads.
    mailbox box;

    // Makes run() return. From any thread.
    void stop();

    // The thread's body.
    void run();

  private:
    void connect(steady::time_point now);
    void start_publisher_if_allowed(steady::time_point now);
    // These two need no memory.
    void disconnect(steady::time_point now, log_level, std::string_view why) noexcept;
    void note(log_level, std::string_view problem, std::string_view more = {}) noexcept;

    // What there is to hear and to say now. False: the connection is lost.
    bool talk(steady::time_point now);
    bool obey(incoming const&, steady::time_point now);
    bool say_formats();
    bool say_format(protocol::video_format_body const&);
    bool say_format(protocol::audio_format_body const&);
    bool say_picture(steady::time_point now);
    bool say_copies();
    bool make_pool(std::size_t picture_bytes, steady::time_point now);
    void drop_pool() noexcept;
    bool say_sound();

    void keep_books(steady::time_point now);
    void report_losses(protocol::losses_body const& totals);
    void wait(steady::time_point now);

    source_identity const identity;
    std::string const folder;
    start_environment const environment;
    log const messages;
    waker wake_up;
    std::atomic<bool> stopping{false};

    // everything below is the thread's own
    std::optional<channel> publisher;
    bool publisher_speaks = false;
    bool welcomed = false;
    protocol::wants_body wants{};
    mailbox::formats said_formats;
    std::uint32_t pool_id = 0;
    std::shared_ptr<slot_pool> pool; // the mailbox has it too, and lends its slots
    steady::time_point next_pool;    // after a failure

    steady::time_point connected_at;
    steady::time_point next_connect;
    steady::duration connect_pause{};
    start_limit starts;
    steady::time_point last_start;
    std::size_t last_problem = 0; // its hash: it is not said again until something else happens

    std::optional<steady::time_point> next_books; // none while the host rests
    steady::time_point next_report;
    protocol::losses_body booked{};
    protocol::losses_body reported{};
};

} // namespace quillo::open
