#pragma once

// The one thread that runs the callbacks of registered waits, or starts a thread for each, and moves what is pending on
// sockets. It is started on first use, takes no signals, and runs as long as the process: past the end of its statics,
// too.
//
// Everything here but LayerLock and WakeWaitThread is called under LayerLock.

#include <cstdint>
#include <functional>
#include <mutex>

namespace posix_layer {

// Guards events, registered waits, pipes and watched descriptors. No callback of the program runs under it.
std::mutex& LayerLock();

// False, with the last error ERROR_NOT_ENOUGH_MEMORY, if there is no such thread and it can't be started.
bool StartWaitThread();

// Makes the thread re-evaluate what there is to do. Any thread, with or without LayerLock.
void WakeWaitThread();

using WatchId = std::uint64_t;
inline constexpr WatchId kNoWatch = 0;

// Watches a descriptor until RemoveWatch; the descriptor has to stay open until then. `onReady` is called on the wait
// thread, under LayerLock, and may remove or arm its own watch.
WatchId AddWatch(int descriptor, std::function<void()> onReady);

// Asks for one call of `onReady`, once one of the epoll `events` is there or the other end has gone.
void ArmWatch(WatchId id, std::uint32_t events);

void RemoveWatch(WatchId id);

}  // namespace posix_layer
