#include "publisher/page/loop_thread.h"

#include <future>

namespace quillo::publisher {

namespace {

using work = std::function<void()>;

void attach(GSource* source, GMainContext* context, work f, GSourceFunc call)
{
    g_source_set_callback(source, call, new work{std::move(f)}, [](gpointer data) { delete static_cast<work*>(data); });
    g_source_attach(source, context);
}

} // namespace

loop_timer::loop_timer(GMainContext* context, std::chrono::milliseconds period, std::function<void()> f)
    : source_(g_timeout_source_new(static_cast<guint>(period.count())))
{
    attach(source_.get(), context, std::move(f), [](gpointer data) -> gboolean {
        (*static_cast<work*>(data))();
        return G_SOURCE_CONTINUE;
    });
}

loop_thread::loop_thread() : context_(g_main_context_new()), loop_(g_main_loop_new(context_.get(), FALSE))
{
    thread_ = std::thread{[this] {
        g_main_context_push_thread_default(context_.get());
        g_main_loop_run(loop_.get());
        g_main_context_pop_thread_default(context_.get());
    }};
}

loop_thread::~loop_thread()
{
    post([this] { g_main_loop_quit(loop_.get()); });
    thread_.join();
}

void loop_thread::post(std::function<void()> f)
{
    // Not g_main_context_invoke, which would run f here and now while nobody owns the context.
    g_source_ptr const source{g_idle_source_new()};
    g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
    attach(source.get(), context_.get(), std::move(f), [](gpointer data) -> gboolean {
        (*static_cast<work*>(data))();
        return G_SOURCE_REMOVE;
    });
}

void loop_thread::call(std::function<void()> const& f)
{
    std::promise<void> done;
    post([&] {
        try {
            f();
            done.set_value();
        } catch (...) {
            done.set_exception(std::current_exception());
        }
    });
    done.get_future().get();
}

} // namespace quillo::publisher
