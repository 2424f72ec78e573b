#include "publisher/config/watcher.h"

#include "publisher/log.h"

namespace quillo::publisher {

namespace {

// Always on the thread that runs the context's loop, even before it does.
void on_loop(GMainContext* context, std::function<void()> f)
{
    g_source_ptr const once{g_idle_source_new()};
    g_source_set_callback(
        once.get(),
        [](gpointer what) -> gboolean {
            (*static_cast<std::function<void()>*>(what))();
            return G_SOURCE_REMOVE;
        },
        new std::function<void()>{std::move(f)},
        [](gpointer what) { delete static_cast<std::function<void()>*>(what); });
    g_source_attach(once.get(), context);
}

} // namespace

configuration_watcher::configuration_watcher(std::string const& file, std::function<void()> changed)
    : changed_(std::move(changed)), context_(g_main_context_new()), loop_(g_main_loop_new(context_.get(), FALSE)),
      thread_([this, file] { run(file); })
{
}

configuration_watcher::~configuration_watcher()
{
    on_loop(context_.get(), [this] { g_main_loop_quit(loop_.get()); });
    thread_.join();
}

void configuration_watcher::look_now()
{
    on_loop(context_.get(), [this] { change_seen(std::chrono::milliseconds{0}); });
}

void configuration_watcher::change_seen(std::chrono::milliseconds wait)
{
    if (pending_)
        g_source_destroy(pending_.get());
    pending_.reset(g_timeout_source_new(static_cast<guint>(wait.count())));
    g_source_set_callback(
        pending_.get(),
        [](gpointer self) -> gboolean {
            static_cast<configuration_watcher*>(self)->changed_();
            return G_SOURCE_REMOVE;
        },
        this, nullptr);
    g_source_attach(pending_.get(), context_.get());
}

void configuration_watcher::run(std::string const& file)
{
    g_main_context_push_thread_default(context_.get());
    auto const watched = adopt<object_ptr<GFile>>(g_file_new_for_path(file.c_str()));
    GError* error = nullptr;
    object_ptr<GFileMonitor> const monitor{
        g_file_monitor_file(watched.get(), G_FILE_MONITOR_WATCH_MOVES, nullptr, &error)};
    error_ptr const owned{error};
    if (monitor)
        g_signal_connect(monitor.get(), "changed",
                         G_CALLBACK(+[](GFileMonitor*, GFile*, GFile*, GFileMonitorEvent, gpointer self) {
                             static_cast<configuration_watcher*>(self)->change_seen(settling);
                         }),
                         this);
    else
        log::warning("changes of ", file, " are not noticed: ", owned->message);
    // The file may have changed before the monitor was there.
    change_seen(settling);
    g_main_loop_run(loop_.get());
    if (pending_)
        g_source_destroy(pending_.get());
    g_main_context_pop_thread_default(context_.get());
}

} // namespace quillo::publisher
