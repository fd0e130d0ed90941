#pragma once

// The waits that are registered, and their callbacks. Everything is called under LayerLock.
//
// All callbacks run on the wait thread, one after another. With TOLLMERE_TEST_WAIT_THREADS=each in the environment each
// call has a thread of its own instead, and only those of one wait come one after another: a program that needs more
// order than that is found out.

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
    bool running = false;  // its callback; kept by RunOneWait
};

void AddWait(std::shared_ptr<RegisteredWait> wait);

// The wait never fires again; a callback that is running goes on. A wait that has fired for good need not be there.
void RemoveWait(const RegisteredWait& wait);

// For the wait thread alone.
int MillisecondsToNextWait();                         // 0 if one is due, -1 if there is nothing to wait for
void RunOneWait(std::unique_lock<std::mutex>& lock);  // if one is due; without the lock meanwhile

}  // namespace posix_layer
