#pragma once

// For tests only: the layer's clock can be moved forward. Every time that the layer gives and every time-out of a
// registered wait is measured on it.

#include <chrono>

namespace platform_testing {

// Moves the clock and wakes the wait thread, so that time-outs that have come due fire. Any thread.
void AdvanceClock(std::chrono::milliseconds by);

}  // namespace platform_testing

// A whole program under test is moved through a FIFO that the environment variable TOLLMERE_TEST_CLOCK names: each line
// written to it is a decimal number of milliseconds to advance by. The program opens it at its start.
