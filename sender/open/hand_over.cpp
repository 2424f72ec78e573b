#include "sender/open/hand_over.h"

#include "sender/open/runtime_folder.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <thread>
#include <utility>

namespace quillo::open {

using namespace std::chrono_literals;
using protocol::message;

namespace {

constexpr auto shortest_pause = 10ms; // between attempts to connect
constexpr auto longest_pause = 500ms;
constexpr auto pause_after_start = 100ms; // a publisher has been started and will listen soon
constexpr auto books_interval = 1s;
constexpr auto report_interval = 10s;

std::span<std::byte const> bytes_of(std::string const& text) { return std::as_bytes(std::span{text}); }

} // namespace

hand_over::hand_over(source_identity who, std::string runtime_folder, start_environment variables)
    : box([this] { wake_up.wake(); }), identity(std::move(who)), folder(std::move(runtime_folder)),
      environment(std::move(variables)), messages(read_log_level(environment.get("QUILLO_LOG")), identity.name)
{
}

void hand_over::stop()
{
    stopping = true;
    wake_up.wake();
}

void hand_over::run()
{
    while (!stopping) {
        auto const now = steady::now();
        try {
            if (!publisher && now >= next_connect)
                connect(now);
            if (publisher && !talk(now))
                disconnect(now, welcomed ? log_level::warning : log_level::info,
                           publisher->confused() ? "it says what nobody understands" : "it closed the connection");
            keep_books(now);
        } catch (std::exception const& error) {
            disconnect(now, log_level::warning, error.what());
        }
        wait(now);
    }
    try {
        report_losses(box.totals());
    } catch (std::exception const& error) {
        messages.write(log_level::warning, "losses are not told: ", error.what());
    }
    publisher.reset();
    box.set_wants(false, false);
}

void hand_over::connect(steady::time_point now)
{
    std::error_code problem;
    std::string folder_problem;
    if (!make_private_folder(folder, folder_problem))
        note(log_level::error, folder_problem);
    else
        publisher = channel::connect(socket_path(folder), problem);

    if (!publisher) {
        if (problem == std::errc::no_such_file_or_directory || problem == std::errc::connection_refused)
            start_publisher_if_allowed(now);
        else if (problem)
            note(log_level::warning, "cannot reach the publisher: " + problem.message());
        auto const longest = now - last_start < 3s ? pause_after_start : longest_pause;
        connect_pause = std::clamp<steady::duration>(2 * connect_pause, shortest_pause, longest);
        next_connect = now + connect_pause;
        return;
    }
    connected_at = now;
    welcomed = false;
    said_formats = {};
    protocol::hello_body hello{.version = protocol::version,
                               .pid = static_cast<std::uint32_t>(::getpid()),
                               .sender_id = {},
                               .name_size = static_cast<std::uint32_t>(identity.name.size()),
                               .groups_size = static_cast<std::uint32_t>(identity.groups.size())};
    std::copy(identity.id.begin(), identity.id.end(), hello.sender_id);
    if (!publisher->send(message::hello, hello, bytes_of(identity.name + identity.groups)))
        disconnect(now, log_level::info, "it closed the connection");
}

void hand_over::start_publisher_if_allowed(steady::time_point now)
{
    if (!starts.may_start(now))
        return;
    starts.started(now);
    auto const program = find_publisher(environment);
    if (!program) {
        auto const* const chosen = environment.get("QUILLO_PUBLISHER");
        note(chosen ? log_level::debug : log_level::error,
             "no publisher runs, and there is no program to start one: set QUILLO_PUBLISHER");
        return;
    }
    try {
        start_publisher(*program, folder, environment);
        last_start = now;
        messages.write(log_level::info, "started " + *program + " serve --on-demand");
    } catch (std::system_error const& error) {
        note(log_level::error, std::string{"cannot start a publisher: "} + error.what());
    }
}

void hand_over::disconnect(steady::time_point now, log_level level, std::string_view why) noexcept
{
    note(level, "no connection to the publisher: ", why);
    bool const held_for_long = publisher && now - connected_at >= 1s;
    publisher.reset();
    publisher_speaks = false;
    wants = {};
    box.set_wants(false, false);
    drop_pool();
    starts.lost(now);
    // One that has held for a while is tried again at once, one that breaks every time less and less often.
    connect_pause = held_for_long ? steady::duration{}
                                  : std::clamp<steady::duration>(2 * connect_pause, shortest_pause, longest_pause);
    next_connect = now + connect_pause;
}

void hand_over::note(log_level level, std::string_view problem, std::string_view more) noexcept
{
    std::hash<std::string_view> const hash;
    auto const this_problem = hash(problem) + 31 * hash(more);
    if (this_problem != std::exchange(last_problem, this_problem))
        messages.write(level, problem, more);
}

bool hand_over::talk(steady::time_point now)
{
    if (std::exchange(publisher_speaks, false)) {
        bool const open = publisher->receive();
        while (auto const said = publisher->next())
            if (!obey(*said, now))
                return false;
        if (!open || publisher->confused())
            return false;
    }
    if (!publisher->flush())
        return false;
    if (!wants.video && publisher->idle())
        drop_pool();
    return say_formats() && say_picture(now) && say_sound();
}

bool hand_over::obey(incoming const& said, steady::time_point now)
{
    switch (said.type) {
    case message::welcome:
        if (said.welcome.version != protocol::version) {
            note(log_level::error, "the publisher that runs is of another version");
            return false;
        }
        welcomed = true;
        starts.answered(now);
        last_problem = 0;
        messages.write(log_level::info, "connected to the publisher, process " + std::to_string(said.welcome.pid));
        break;
    case message::wants:
        wants = said.wants;
        box.set_wants(wants.video != 0, wants.audio != 0);
        messages.write(log_level::debug, std::string{"wanted: "} + (wants.video ? "pictures " : "no pictures ") +
                                             (wants.audio ? "sound" : "no sound"));
        break;
    default:
        if (pool && said.release.pool_id == pool_id)
            box.give_back(said.release.slot);
    }
    return true;
}

bool hand_over::say_formats()
{
    if (!publisher->idle())
        return true;
    auto const [video, audio] = box.current_formats();
    return (!video || say_format(*video)) && (!audio || say_format(*audio));
}

bool hand_over::say_format(protocol::video_format_body const& format)
{
    if (said_formats.video == format)
        return true;
    said_formats.video = format;
    return publisher->send(message::video_format, format);
}

bool hand_over::say_format(protocol::audio_format_body const& format)
{
    if (said_formats.audio == format)
        return true;
    said_formats.audio = format;
    return publisher->send(message::audio_format, format);
}

bool hand_over::say_picture(steady::time_point now)
{
    auto const bytes = box.waiting_bytes();
    if (bytes && (!pool || pool->slot_bytes() < *bytes)) {
        if (!say_copies())
            return false;
        if (publisher->idle() && !make_pool(*bytes, now))
            return false;
    }
    box.copy_waiting();
    return say_copies();
}

bool hand_over::say_copies()
{
    while (publisher->idle()) {
        auto const copy = box.next_copied();
        if (!copy)
            break;
        auto const& held = copy->held;
        protocol::video_body const said{.format = held.what.format,
                                        .pool_id = pool_id,
                                        .slot = copy->slot,
                                        .timecode_100ns = held.timecode_100ns,
                                        .sent_ns = held.sent_ns,
                                        .index = held.index,
                                        .repeat = copy->repeat ? 1u : 0u,
                                        .reserved = 0};
        // The host may have gone on to another format since the last look at it.
        if (!say_format(said.format) || !publisher->send(message::video, said))
            return false;
    }
    return true;
}

bool hand_over::make_pool(std::size_t picture_bytes, steady::time_point now)
{
    if (now < next_pool)
        return true;
    drop_pool();
    try {
        // Touching all of it takes a while, in which no video call waits.
        pool = std::make_shared<slot_pool>(picture_bytes);
    } catch (std::system_error const& error) {
        note(log_level::error, std::string{"no memory for pictures: "} + error.what());
        next_pool = now + 1s;
        return true;
    }
    ++pool_id;
    box.set_pool(pool);
    return publisher->send(
        message::pool,
        protocol::pool_body{.pool_id = pool_id, .slots = slot_pool::slots, .slot_bytes = pool->slot_bytes()}, {},
        pool->fd());
}

void hand_over::drop_pool() noexcept
{
    if (!pool)
        return;
    box.set_pool(nullptr);
    pool.reset();
}

bool hand_over::say_sound()
{
    while (publisher->idle()) {
        auto const* const block = box.first_sound();
        if (!block)
            return true;
        bool const alive =
            say_format(block->head.format) && publisher->send(message::audio, block->head, block->samples);
        box.drop_sound();
        if (!alive)
            return false;
    }
    return true;
}

// Counts go to the publisher once a second and losses to the log once in ten, while there is anything new; a resting
// host lets this thread sleep.
void hand_over::keep_books(steady::time_point now)
{
    for (auto const& line : box.first_refusals())
        messages.write(log_level::warning, line);

    if (next_books && now < *next_books)
        return;
    box.wake_on_send();
    auto const totals = box.totals();
    if (now >= next_report && !(totals == reported)) {
        report_losses(totals);
        next_report = now + report_interval;
    }
    bool const news = !(totals == booked);
    if (news && publisher && publisher->idle() && publisher->send(message::losses, totals))
        booked = totals;
    next_books.reset();
    if (news || !(totals == reported))
        next_books = now + books_interval;
}

void hand_over::report_losses(protocol::losses_body const& totals)
{
    auto const since = [&](std::uint64_t protocol::losses_body::*count) { return totals.*count - reported.*count; };
    auto const no_slot = since(&protocol::losses_body::video_no_slot);
    auto const replaced = since(&protocol::losses_body::video_replaced);
    auto const no_room = since(&protocol::losses_body::audio_no_room);
    auto const refused = since(&protocol::losses_body::video_refused) + since(&protocol::losses_body::audio_refused);
    auto const late_video = since(&protocol::losses_body::video_late);
    auto const late_audio = since(&protocol::losses_body::audio_late);

    using std::to_string;
    if (no_slot + replaced + no_room + refused)
        messages.write(log_level::warning, "lost since the last such line: " + to_string(no_slot) +
                                               " pictures to which the publisher gave no place, " +
                                               to_string(replaced) + " overtaken by the next one, " +
                                               to_string(no_room) +
                                               " blocks of sound that the publisher did not read in time, " +
                                               to_string(refused) + " records refused");
    if (late_video + late_audio)
        messages.write(log_level::info, "the host was late: picture clock started anew " + to_string(late_video) +
                                            " times, sound clock " + to_string(late_audio) + " times");
    reported = totals;
}

void hand_over::wait(steady::time_point now)
{
    auto until = steady::time_point::max();
    if (!publisher)
        until = std::min(until, next_connect);
    if (next_books)
        until = std::min(until, *next_books);

    int timeout = -1;
    if (until != steady::time_point::max())
        timeout = static_cast<int>(
            std::clamp<std::int64_t>(std::chrono::ceil<std::chrono::milliseconds>(until - now).count(), 0, 60'000));

    std::array<pollfd, 2> sources{};
    sources[0] = {wake_up.fd(), POLLIN, 0};
    sources[1] = {publisher ? publisher->fd() : -1, POLLIN, 0};
    if (publisher && !publisher->idle())
        sources[1].events |= POLLOUT;
    if (::poll(sources.data(), sources.size(), timeout) < 0 && errno != EINTR)
        std::this_thread::sleep_for(shortest_pause); // nothing is known to wait for
    if (sources[0].revents)
        wake_up.drain();
    publisher_speaks = sources[1].revents & (POLLIN | POLLHUP | POLLERR);
}

} // namespace quillo::open
