#include "sender/open/sender.h"

#include "lib/text/utf8.h"
#include "sender/open/runtime_folder.h"
#include "sender/open/system_call.h"

#include <pthread.h>
#include <unistd.h>
#ifdef __APPLE__
#include <sys/random.h>
#endif

#include <csignal>
#include <stdexcept>
#include <string_view>

namespace quillo::open {

using namespace std::chrono_literals;

namespace {

std::int64_t nanoseconds(steady::time_point time) { return std::chrono::nanoseconds{time.time_since_epoch()}.count(); }

source_identity identify(SenderSettings const& settings)
{
    if (!settings.sourceName || !*settings.sourceName)
        throw std::invalid_argument{"a sender needs a name"};
    source_identity result;
    result.name = text::cut(settings.sourceName, protocol::max_name);
    if (settings.groups)
        result.groups = text::cut(settings.groups, protocol::max_name);
    check_call(::getentropy(result.id.data(), result.id.size()), "getentropy");
    return result;
}

// The host's signals are for the host's threads; faults stay with the thread that made them.
std::thread start_without_signals(std::packaged_task<void()> task)
{
    sigset_t blocked;
    sigset_t before;
    sigfillset(&blocked);
    for (int const fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT})
        sigdelset(&blocked, fault);
    ::pthread_sigmask(SIG_SETMASK, &blocked, &before);
    struct restore
    {
        sigset_t const& mask;
        ~restore() { ::pthread_sigmask(SIG_SETMASK, &mask, nullptr); }
    } const at_end{before};
    return std::thread{std::move(task)};
}

} // namespace

sender::sender(SenderSettings const& settings)
    : clock_video(settings.clockVideo), clock_audio(settings.clockAudio), owner(::getpid()),
      work(std::make_shared<hand_over>(identify(settings), runtime_folder(), start_environment::of_this_process()))
{
    std::packaged_task<void()> task{[shared = work] {
#ifdef __linux__
        ::pthread_setname_np(::pthread_self(), "quillo-sender");
        // When the host's thread wakes this one, the host's goes on first.
        sched_param const none{};
        ::pthread_setschedparam(::pthread_self(), SCHED_BATCH, &none);
#endif
        shared->run();
    }};
    ended = task.get_future();
    thread = start_without_signals(std::move(task));
}

sender::~sender()
{
    finish_held();
    work->stop();
    // The thread waits for nobody but, at worst, the operating system.
    if (ended.wait_for(1500ms) == std::future_status::ready)
        thread.join();
    else
        thread.detach();
}

bool sender::of_this_process() const { return owner == ::getpid(); }

void sender::send_video(SenderVideoFrame const* frame, bool finish)
{
    finish_held();
    if (!frame)
        return;
    auto const checked = check(*frame);
    if (auto const* const why = std::get_if<refusal>(&checked)) {
        work->box.refuse_video(*why, *frame);
        return;
    }
    auto const& what = std::get<picture>(checked);
    auto const now = steady::now();
    if (clock_video) {
        std::lock_guard const guard{clocks};
        if (pictures.frame(now, what.format.rate_n, what.format.rate_d))
            work->box.count_video_late();
    }
    work->box.hold(what, frame->timecode, nanoseconds(now));
    if (finish)
        finish_held();
}

void sender::finish_held()
{
    if (!work->box.holds())
        return;
    auto until = steady::now();
    if (clock_video) {
        std::lock_guard const guard{clocks};
        until = pictures.wait_until(until);
    }
    std::this_thread::sleep_until(until);
    work->box.take_back();
}

void sender::send_audio(SenderAudioFrame const& frame)
{
    auto const checked = check(frame);
    if (auto const* const why = std::get_if<refusal>(&checked)) {
        work->box.refuse_audio(*why, frame);
        return;
    }
    auto const& what = std::get<sound>(checked);
    auto const now = steady::now();
    audio_clock::block due{now, now, false};
    if (clock_audio) {
        std::lock_guard const guard{clocks};
        due = blocks.next(now, what.format.rate, what.samples);
    }
    if (due.late)
        work->box.count_audio_late();
    work->box.add(what, frame.timecode, nanoseconds(due.begin));
    std::this_thread::sleep_until(due.end);
}

} // namespace quillo::open
