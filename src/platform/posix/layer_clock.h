#pragma once

// The layer's one clock: the real ones plus what tests have moved them by. Any thread.

#include <chrono>

namespace posix_layer {

std::chrono::steady_clock::time_point SteadyNow();
std::chrono::system_clock::time_point SystemNow();

// Has the wait thread read the FIFO that TOLLMERE_TEST_CLOCK names, if it names one. Call it once.
void WatchClockFifo();

}  // namespace posix_layer
