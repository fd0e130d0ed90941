#include "platform/posix/wait_thread.h"

#include <pthread.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <map>
#include <system_error>
#include <thread>

#include "platform/no_destructor.h"
#include "platform/posix/allocation_faults.h"
#include "platform/posix/registered_waits.h"
#include "platform/posix/windows_calls.h"

namespace posix_layer {

namespace {

struct Watch {
    int descriptor;
    std::function<void()> onReady;
};

struct WaitThread {
    WaitThread() {
        epoll_event event = {};
        event.events = EPOLLIN;
        event.data.u64 = kNoWatch;
        epoll_ctl(epoll, EPOLL_CTL_ADD, wake, &event);
    }

    std::mutex lock;  // LayerLock
    const int epoll = epoll_create1(EPOLL_CLOEXEC);
    const int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    // Under the lock:
    bool started = false;
    WatchId lastWatch = kNoWatch;
    std::map<WatchId, Watch> watches;
};

thread_local bool t_IsWaitThread = false;

WaitThread& TheWaitThread() {
    static NoDestructor<WaitThread> state;
    return *state;
}

void OnReady(WatchId id) {
    const SystemAllocations scope;
    WaitThread& thread = TheWaitThread();
    if (id == kNoWatch) {
        eventfd_t ignored;
        eventfd_read(thread.wake, &ignored);
        return;
    }
    // Not there any more if an event of the same round has removed it.
    const auto found = thread.watches.find(id);
    if (found == thread.watches.end()) return;
    const std::function<void()> onReady = found->second.onReady;
    onReady();
}

[[noreturn]] void Run() {
    t_IsWaitThread = true;
    WaitThread& thread = TheWaitThread();
    std::unique_lock lock(thread.lock);
    for (;;) {
        const int timeout = MillisecondsToNextWait();
        lock.unlock();
        epoll_event events[16];
        const int count = epoll_wait(thread.epoll, events, 16, timeout);
        lock.lock();
        for (int i = 0; i < count; ++i) OnReady(events[i].data.u64);
        // One at a time, so that a wait that fires again and again keeps neither the sockets nor the others waiting.
        RunOneWait(lock);
    }
}

}  // namespace

std::mutex& LayerLock() {
    return TheWaitThread().lock;
}

bool StartWaitThread() {
    WaitThread& thread = TheWaitThread();
    if (thread.started) return true;
    // The thread inherits the mask: a signal is for the program's own threads.
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        std::thread(Run).detach();
        thread.started = true;
    } catch (const std::system_error&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread.started;
}

void WakeWaitThread() {
    // The thread itself looks at everything before it sleeps.
    if (!t_IsWaitThread) eventfd_write(TheWaitThread().wake, 1);
}

WatchId AddWatch(int descriptor, std::function<void()> onReady) {
    StartWaitThread();
    WaitThread& thread = TheWaitThread();
    const WatchId id = ++thread.lastWatch;
    thread.watches[id] = {descriptor, std::move(onReady)};
    epoll_event event = {};
    event.events = EPOLLONESHOT;
    event.data.u64 = id;
    epoll_ctl(thread.epoll, EPOLL_CTL_ADD, descriptor, &event);
    return id;
}

void ArmWatch(WatchId id, std::uint32_t events) {
    WaitThread& thread = TheWaitThread();
    const auto found = thread.watches.find(id);
    if (found == thread.watches.end()) return;
    epoll_event event = {};
    // One shot: the end of a connection is reported always, and would be reported for ever to nobody.
    event.events = events | EPOLLONESHOT;
    event.data.u64 = id;
    epoll_ctl(thread.epoll, EPOLL_CTL_MOD, found->second.descriptor, &event);
}

void RemoveWatch(WatchId id) {
    WaitThread& thread = TheWaitThread();
    const auto node = thread.watches.extract(id);
    if (!node.empty()) epoll_ctl(thread.epoll, EPOLL_CTL_DEL, node.mapped().descriptor, nullptr);
}

}  // namespace posix_layer
