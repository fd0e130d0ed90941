#include "platform/posix/registered_waits.h"

#include <algorithm>
#include <climits>
#include <condition_variable>
#include <map>

#include "platform/posix/layer_clock.h"

namespace posix_layer {

namespace {

using TimePoint = std::chrono::steady_clock::time_point;

struct Waits {
    std::map<std::uint64_t, std::shared_ptr<RegisteredWait>> byNumber;  // in the order of their registration
    std::uint64_t lastAdded = 0;
    std::uint64_t lastFired = 0;
    std::shared_ptr<RegisteredWait> running;
    std::condition_variable ended;
};

// Never destroyed: the wait thread outlives the process's statics.
Waits& State() {
    static Waits& waits = *new Waits;
    return waits;
}

bool IsDue(const RegisteredWait& wait, TimePoint now) {
    return wait.event->IsSignalled() || (wait.deadline && *wait.deadline <= now);
}

void SetDeadline(RegisteredWait& wait) {
    if (wait.timeOut) wait.deadline = SteadyNow() + *wait.timeOut;
}

// In turns, so that none that is always due keeps the others from firing.
auto NextDue() {
    auto& waits = State().byNumber;
    const TimePoint now = SteadyNow();
    const auto isDue = [now](const auto& entry) { return IsDue(*entry.second, now); };
    const auto turn = waits.upper_bound(State().lastFired);
    const auto found = std::find_if(turn, waits.end(), isDue);
    if (found != waits.end()) return found;
    const auto early = std::find_if(waits.begin(), turn, isDue);
    return early == turn ? waits.end() : early;
}

}  // namespace

void AddWait(std::shared_ptr<RegisteredWait> wait) {
    Waits& waits = State();
    SetDeadline(*wait);
    waits.byNumber[++waits.lastAdded] = std::move(wait);
    WakeWaitThread();
}

void RemoveWait(const RegisteredWait& wait) {
    std::erase_if(State().byNumber, [&wait](const auto& entry) { return entry.second.get() == &wait; });
}

bool IsRunning(const RegisteredWait& wait) {
    return State().running.get() == &wait;
}

void AwaitEnd(const RegisteredWait& wait, std::unique_lock<std::mutex>& lock) {
    State().ended.wait(lock, [&wait] { return !IsRunning(wait); });
}

int MillisecondsToNextWait() {
    const TimePoint now = SteadyNow();
    std::optional<TimePoint> first;
    for (const auto& [number, wait] : State().byNumber) {
        if (IsDue(*wait, now)) return 0;
        if (wait->deadline && (!first || *wait->deadline < *first)) first = wait->deadline;
    }
    if (!first) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*first - now).count();
    return static_cast<int>(std::min<std::int64_t>(left, INT_MAX));
}

void RunOneWait(std::unique_lock<std::mutex>& lock) {
    Waits& waits = State();
    const auto due = NextDue();
    if (due == waits.byNumber.end()) return;
    waits.lastFired = due->first;
    waits.running = due->second;
    RegisteredWait& wait = *waits.running;
    const bool signalled = wait.event->IsSignalled();
    if (signalled) wait.event->Consume();
    if (wait.onlyOnce) {
        waits.byNumber.erase(due);
    } else {
        SetDeadline(wait);
    }

    lock.unlock();
    wait.callback(wait.context, signalled ? 0 : 1);
    lock.lock();
    waits.running = nullptr;
    waits.ended.notify_all();
}

}  // namespace posix_layer
