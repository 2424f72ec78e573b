#include "publisher/connection_threads.h"

#include <utility>

namespace quillo::publisher {

void running_threads::add()
{
    std::lock_guard const lock{mutex_};
    ++running_;
}

void running_threads::remove()
{
    std::lock_guard const lock{mutex_};
    --running_;
    changed_.notify_all();
}

bool running_threads::wait_until_none(std::chrono::milliseconds limit) const
{
    std::unique_lock lock{mutex_};
    return changed_.wait_for(lock, limit, [this] { return running_ == 0; });
}

namespace {

struct thread_pool
{
    GstRTSPThreadPool parent;
    std::shared_ptr<running_threads>* counted;
};

struct thread_poolClass
{
    GstRTSPThreadPoolClass parent;
};

G_DEFINE_TYPE(thread_pool, quillo_thread_pool, GST_TYPE_RTSP_THREAD_POOL)

running_threads& count_of(GstRTSPThreadPool* self) { return **reinterpret_cast<thread_pool*>(self)->counted; }

void configure_thread(GstRTSPThreadPool* self, GstRTSPThread*, GstRTSPContext*) { count_of(self).add(); }
void thread_leave(GstRTSPThreadPool* self, GstRTSPThread*) { count_of(self).remove(); }

void finalize(GObject* self)
{
    delete reinterpret_cast<thread_pool*>(self)->counted;
    G_OBJECT_CLASS(quillo_thread_pool_parent_class)->finalize(self);
}

void quillo_thread_pool_class_init(thread_poolClass* of)
{
    of->parent.configure_thread = configure_thread;
    of->parent.thread_leave = thread_leave;
    G_OBJECT_CLASS(of)->finalize = finalize;
}

void quillo_thread_pool_init(thread_pool*) {}

} // namespace

object_ptr<GstRTSPThreadPool> make_thread_pool(std::shared_ptr<running_threads> counted, int most_for_connections)
{
    auto* const made = static_cast<thread_pool*>(g_object_new(quillo_thread_pool_get_type(), nullptr));
    made->counted = new std::shared_ptr<running_threads>{std::move(counted)};
    gst_rtsp_thread_pool_set_max_threads(&made->parent, most_for_connections);
    return object_ptr<GstRTSPThreadPool>{&made->parent};
}

} // namespace quillo::publisher
