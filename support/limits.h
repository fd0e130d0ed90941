#pragma once

// How long tests wait for things, in one place. Free-threaded.

#include <chrono>
#include <functional>

namespace support {

// The longest that any one wait may take: 30 s, times the environment variable TOLLMERE_TEST_STRETCH (a number above 0)
// on slow machines. A wait that gets there has failed.
std::chrono::milliseconds Limit();

// Asks `isTrue` again and again until it answers true. False if it hasn't within Limit().
bool WaitUntil(const std::function<bool()>& isTrue);

}  // namespace support
