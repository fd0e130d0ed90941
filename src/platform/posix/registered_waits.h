#pragma once

// The waits that are registered, and the one callback that is running. Everything is called under LayerLock.

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/posix/events.h"

namespace posix_layer {

struct RegisteredWait : Object {
    bool IsClosable() const override { return false; }

    std::shared_ptr<Event> event;
    WAITORTIMERCALLBACK callback = nullptr;
    void* context = nullptr;
    std::optional<std::chrono::milliseconds> timeOut;
    bool onlyOnce = false;
    // On the layer's clock; kept by AddWait and RunOneWait.
    std::optional<std::chrono::steady_clock::time_point> deadline;
};

void AddWait(std::shared_ptr<RegisteredWait> wait);

// The wait never fires again; a callback that is running goes on. A wait that has fired for good need not be there.
void RemoveWait(const RegisteredWait& wait);

bool IsRunning(const RegisteredWait& wait);

// Waits until the callback isn't running. Never on the wait thread.
void AwaitEnd(const RegisteredWait& wait, std::unique_lock<std::mutex>& lock);

// For the wait thread alone.
int MillisecondsToNextWait();                         // 0 if one is due, -1 if there is nothing to wait for
void RunOneWait(std::unique_lock<std::mutex>& lock);  // if one is due; without the lock while the callback runs

}  // namespace posix_layer
