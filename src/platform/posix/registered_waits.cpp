#include "platform/posix/registered_waits.h"

#include <algorithm>
#include <climits>
#include <map>
#include <thread>

#include "platform/no_destructor.h"
#include "platform/posix/allocation_faults.h"
#include "platform/posix/environment.h"
#include "platform/posix/layer_clock.h"

namespace posix_layer {

namespace {

using TimePoint = std::chrono::steady_clock::time_point;

struct Waits {
    std::map<std::uint64_t, std::shared_ptr<RegisteredWait>> byNumber;  // in the order of their registration
    std::uint64_t lastAdded = 0;
    std::uint64_t lastFired = 0;
};

Waits& AllWaits() {
    static NoDestructor<Waits> waits;
    return *waits;
}

bool HasThreadForEachCall() {
    static const bool has = GetVariable("TOLLMERE_TEST_WAIT_THREADS") == "each";
    return has;
}

bool IsDue(const RegisteredWait& wait, TimePoint now) {
    if (wait.running) return false;
    return wait.event->IsSignalled() || (wait.deadline && *wait.deadline <= now);
}

void SetDeadline(RegisteredWait& wait) {
    if (wait.timeOut) wait.deadline = SteadyNow() + *wait.timeOut;
}

// In turns, so that none that is always due keeps the others from firing.
auto NextDue() {
    auto& waits = AllWaits().byNumber;
    const TimePoint now = SteadyNow();
    const auto isDue = [now](const auto& entry) { return IsDue(*entry.second, now); };
    const auto turn = waits.upper_bound(AllWaits().lastFired);
    const auto found = std::find_if(turn, waits.end(), isDue);
    if (found != waits.end()) return found;
    const auto early = std::find_if(waits.begin(), turn, isDue);
    return early == turn ? waits.end() : early;
}

void Call(const std::shared_ptr<RegisteredWait>& wait, bool signalled) {
    wait->callback(wait->context, signalled ? 0 : 1);
    const std::lock_guard lock(LayerLock());
    wait->running = false;
    WakeWaitThread();
}

}  // namespace

void AddWait(std::shared_ptr<RegisteredWait> wait) {
    Waits& waits = AllWaits();
    SetDeadline(*wait);
    waits.byNumber[++waits.lastAdded] = std::move(wait);
    WakeWaitThread();
}

void RemoveWait(const RegisteredWait& wait) {
    std::erase_if(AllWaits().byNumber, [&wait](const auto& entry) { return entry.second.get() == &wait; });
}

int MillisecondsToNextWait() {
    const TimePoint now = SteadyNow();
    std::optional<TimePoint> first;
    for (const auto& [number, wait] : AllWaits().byNumber) {
        if (IsDue(*wait, now)) return 0;
        if (wait->deadline && (!first || *wait->deadline < *first)) first = wait->deadline;
    }
    if (!first) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*first - now).count();
    return static_cast<int>(std::min<std::int64_t>(left, INT_MAX));
}

void RunOneWait(std::unique_lock<std::mutex>& lock) {
    Waits& waits = AllWaits();
    const auto due = NextDue();
    if (due == waits.byNumber.end()) return;
    waits.lastFired = due->first;
    const std::shared_ptr<RegisteredWait> wait = due->second;
    wait->running = true;
    const bool signalled = wait->event->IsSignalled();
    if (signalled) wait->event->Consume();
    if (wait->onlyOnce) {
        waits.byNumber.erase(due);
    } else {
        SetDeadline(*wait);
    }

    lock.unlock();
    if (HasThreadForEachCall()) {
        const SystemAllocations scope;
        std::thread(Call, wait, signalled).detach();
    } else {
        Call(wait, signalled);
    }
    lock.lock();
}

}  // namespace posix_layer
