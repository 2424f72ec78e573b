// Darwin's locks begin with a signature that glibc would take for a locked lock. Behind it lies enough zeroed room for
// glibc's own.
#include "tests/support/macho/darwin.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <pthread.h>
#include <time.h>

namespace quillo::macho {

namespace {

struct darwin_mutex
{
    long signature;
    alignas(8) char room[56];
};
static_assert(sizeof(pthread_mutex_t) <= sizeof(darwin_mutex::room));

struct darwin_condition
{
    char room[48]; // signature included: glibc's takes all of it
};
static_assert(sizeof(pthread_cond_t) <= sizeof(darwin_condition));
constexpr long condition_signature = 0x3CB0B1BB;

pthread_mutex_t* lock_of(darwin_mutex* mutex) { return reinterpret_cast<pthread_mutex_t*>(mutex->room); }

// The first use takes the signature away, which leaves a fresh condition.
pthread_cond_t* condition_of(darwin_condition* condition)
{
    __sync_val_compare_and_swap(reinterpret_cast<long*>(condition->room), condition_signature, 0);
    return reinterpret_cast<pthread_cond_t*>(condition->room);
}

void mutex_lock(darwin_mutex* mutex) { pthread_mutex_lock(lock_of(mutex)); }
bool mutex_try_lock(darwin_mutex* mutex) { return pthread_mutex_trylock(lock_of(mutex)) == 0; }
void mutex_unlock(darwin_mutex* mutex) { pthread_mutex_unlock(lock_of(mutex)); }
void mutex_destroy(darwin_mutex* mutex) { pthread_mutex_destroy(lock_of(mutex)); }

// The image's std::unique_lock<std::mutex>, as libc++ lays it out.
struct unique_lock
{
    darwin_mutex* mutex;
    bool owns;
};

void condition_wait(darwin_condition* condition, unique_lock* lock)
{
    pthread_cond_wait(condition_of(condition), lock_of(lock->mutex));
}

// The time point is wall-clock nanoseconds, as macOS's conditions count.
void condition_timed_wait(darwin_condition* condition, unique_lock* lock, long long until_ns)
{
    timespec const until{until_ns / 1'000'000'000, until_ns % 1'000'000'000};
    pthread_cond_timedwait(condition_of(condition), lock_of(lock->mutex), &until);
}
void condition_notify_one(darwin_condition* condition) { pthread_cond_signal(condition_of(condition)); }
void condition_notify_all(darwin_condition* condition) { pthread_cond_broadcast(condition_of(condition)); }
void condition_destroy(darwin_condition* condition) { pthread_cond_destroy(condition_of(condition)); }

int create_thread(pthread_t* thread, void const* attributes, void* (*body)(void*), void* argument)
{
    if (attributes != nullptr)
        std::abort(); // Darwin's attributes are not understood here
    return pthread_create(thread, nullptr, body, argument);
}

// Darwin's keys are 64 bits wide; those of this process's libc++ are the lower half of what the image reads.
void* get_specific(unsigned long key) { return pthread_getspecific(static_cast<pthread_key_t>(key)); }
int set_specific(unsigned long key, void const* value)
{
    return pthread_setspecific(static_cast<pthread_key_t>(key), value);
}

int get_time(int darwin_clock, timespec* time)
{
    switch (darwin_clock) {
    case 0:
        return clock_gettime(CLOCK_REALTIME, time);
    case 4:
        return clock_gettime(CLOCK_MONOTONIC_RAW, time);
    case 6:
        return clock_gettime(CLOCK_MONOTONIC, time);
    case 8:
        return clock_gettime(CLOCK_MONOTONIC_RAW, time);
    default:
        std::abort();
    }
}

void stack_smashed() { std::abort(); }
std::uintptr_t stack_guard = 0x5A5A'0A00'D00F'1234;

// What stands behind the image's std::promise<void> and std::future<void>: the image itself looks at the lock, the
// condition and the state, at the places that Darwin's larger locks give them.
struct shared_state
{
    void* virtual_table;
    long owners;
    void* exception;
    darwin_mutex mutex;
    darwin_condition condition;
    unsigned state;
};
constexpr unsigned state_constructed = 1;
constexpr unsigned state_ready = 4;

void release(shared_state* state)
{
    if (state != nullptr && __atomic_sub_fetch(&state->owners, 1, __ATOMIC_ACQ_REL) == 0) {
        condition_destroy(&state->condition);
        mutex_destroy(&state->mutex);
        delete state;
    }
}

void make_ready(shared_state* state)
{
    mutex_lock(&state->mutex);
    state->state |= state_constructed | state_ready;
    condition_notify_all(&state->condition);
    mutex_unlock(&state->mutex);
}

void make_promise(shared_state** promise)
{
    *promise = new shared_state{};
    (*promise)->owners = 1;
}
void destroy_promise(shared_state** promise)
{
    if (*promise != nullptr && ((*promise)->state & state_ready) == 0)
        make_ready(*promise);
    release(*promise);
}
shared_state** future_of(shared_state** future, shared_state** promise)
{
    __atomic_add_fetch(&(*promise)->owners, 1, __ATOMIC_ACQ_REL);
    *future = *promise;
    return future;
}
void destroy_future(shared_state** future) { release(*future); }
void keep_promise(shared_state** promise) { make_ready(*promise); }
void keep_promise_badly(shared_state**, void*)
{
    std::abort(); // nobody here asks a future for its exception
}

} // namespace

std::span<adapter const> thread_adapters()
{
    static std::array const table = {
        adapt("__ZNSt3__15mutex4lockEv", mutex_lock),
        adapt("__ZNSt3__15mutex8try_lockEv", mutex_try_lock),
        adapt("__ZNSt3__15mutex6unlockEv", mutex_unlock),
        adapt("__ZNSt3__15mutexD1Ev", mutex_destroy),
        adapt("__ZNSt3__118condition_variable4waitERNS_11unique_lockINS_5mutexEEE", condition_wait),
        adapt(
            "__ZNSt3__118condition_variable15__do_timed_waitERNS_11unique_lockINS_5mutexEEENS_6chrono10time_pointINS5_"
            "12system_clockENS5_8durationIxNS_5ratioILl1ELl1000000000EEEEEEE",
            condition_timed_wait),
        adapt("__ZNSt3__118condition_variable10notify_oneEv", condition_notify_one),
        adapt("__ZNSt3__118condition_variable10notify_allEv", condition_notify_all),
        adapt("__ZNSt3__118condition_variableD1Ev", condition_destroy),
        adapt("__ZNSt3__17promiseIvEC1Ev", make_promise),
        adapt("__ZNSt3__17promiseIvED1Ev", destroy_promise),
        adapt("__ZNSt3__17promiseIvE10get_futureEv", future_of),
        adapt("__ZNSt3__17promiseIvE9set_valueEv", keep_promise),
        adapt("__ZNSt3__17promiseIvE13set_exceptionESt13exception_ptr", keep_promise_badly),
        adapt("__ZNSt3__16futureIvED1Ev", destroy_future),
        adapt("_pthread_create", create_thread),
        adapt("_pthread_getspecific", get_specific),
        adapt("_pthread_setspecific", set_specific),
        adapt("_clock_gettime", get_time),
        adapt("___stack_chk_fail", stack_smashed),
        adapter{"___stack_chk_guard", &stack_guard},
    };
    return table;
}

} // namespace quillo::macho
