#include "support/limits.h"

#include <cstdlib>
#include <thread>

namespace support {

std::chrono::milliseconds Limit() {
    constexpr std::chrono::milliseconds kLimit{30'000};
    const char* const text = std::getenv("TOLLMERE_TEST_STRETCH");
    const double stretch = text == nullptr ? 0 : std::atof(text);
    if (stretch <= 0) return kLimit;
    return std::chrono::duration_cast<std::chrono::milliseconds>(kLimit * stretch);
}

bool WaitUntil(const std::function<bool()>& isTrue) {
    constexpr std::chrono::milliseconds kPause{2};
    const auto end = std::chrono::steady_clock::now() + Limit();
    while (!isTrue()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

}  // namespace support
